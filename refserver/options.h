#pragma once

#include <map>
#include <string>
#include <vector>

#include "vorlu/platform/result.h"

namespace vorlu::refserver {

struct Options {
  std::string dataFolder;   ///< empty with `initFolder`
  std::string initFolder;   ///< sample data go here, then the program ends
  std::string renewFolder;  ///< its certificate time stamp becomes now, then the program ends
  int port = 8642;
  std::string siteFile = "site/local.json";
  std::string keyFolder;  ///< beside the site file unless given
  std::string clockFile;
  std::string address = "127.0.0.1";
};

inline constexpr const char* usage =
    "usage: vorlu-server --data DIR [--port 8642] [--site site/local.json] [--keys KEYDIR] [--clock FILE] "
    "[--listen ADDRESS]\n"
    "       vorlu-server --init DIR [--site site/local.json]\n"
    "       vorlu-server --renew DIR [--clock FILE]";

/// Sets the targets of "--name value" pairs. A failure says which argument is wrong.
Status readOptions(const std::vector<std::string>& arguments, const std::map<std::string, std::string*>& targets);

/// The same for the server.
Result<Options> parseOptions(const std::vector<std::string>& arguments);

}  // namespace vorlu::refserver
