#pragma once

#include <string>
#include <vector>

namespace vorlu::refserver {

struct Answer {
  bool arrived = false;  ///< the whole answer came without a transport error
  long status = 0;       ///< 0: no head came
  std::string body;
};

/// One request over a connection of its own; the path goes out exactly as given. Gives up after `limitSeconds`.
Answer request(const std::string& url, const std::vector<std::string>& headers = {}, const std::string& method = "GET",
               double limitSeconds = 10);

}  // namespace vorlu::refserver
