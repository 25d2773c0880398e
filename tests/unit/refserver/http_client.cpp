#include "tests/unit/refserver/http_client.h"

#include <curl/curl.h>

#include <memory>

namespace vorlu::refserver {

namespace {

std::size_t append(char* data, std::size_t size, std::size_t count, void* body) {
  static_cast<std::string*>(body)->append(data, size * count);
  return size * count;
}

}  // namespace

Answer request(const std::string& url, const std::vector<std::string>& headers, const std::string& method,
               double limitSeconds) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  curl_slist* list = nullptr;
  for (const std::string& header : headers) list = curl_slist_append(list, header.c_str());
  const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> owned(list, curl_slist_free_all);

  Answer answer;
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, list);
  curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_NOBODY, method == "HEAD" ? 1L : 0L);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT_MS, static_cast<long>(limitSeconds * 1000));
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer.body);
  answer.arrived = curl_easy_perform(curl.get()) == CURLE_OK;
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &answer.status);
  return answer;
}

}  // namespace vorlu::refserver
