// libcurl brings more than thirty libraries along, whose loading takes longer than all else that a short command does.
// So the program isn't linked with it: the functions that it uses stand here under their own names and are looked up in
// the library when the first of them is called. Without the library every transfer fails like one without a network.

#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>

namespace {

void* library() {
  static void* const handle = dlopen("libcurl.so.4", RTLD_LAZY | RTLD_LOCAL);
  return handle;
}

/// The library's own function of this name and type; nothing without the library.
template <class Function>
Function* lookUp(const char* name) {
  return library() == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(library(), name));
}

}  // namespace

// The header's type checking macros would stand in the way of defining the functions.
#undef curl_easy_setopt
#undef curl_easy_getinfo

#define ON_DEMAND(function, unavailable, ...)                      \
  static auto* const real = lookUp<decltype(function)>(#function); \
  return real == nullptr ? (unavailable) : real(__VA_ARGS__)

extern "C" {

CURLcode curl_global_init(long flags) {
  ON_DEMAND(curl_global_init, CURLE_FAILED_INIT, flags);
}
CURL* curl_easy_init() {
  ON_DEMAND(curl_easy_init, nullptr);
}
CURLcode curl_easy_perform(CURL* handle) {
  ON_DEMAND(curl_easy_perform, CURLE_FAILED_INIT, handle);
}
void curl_easy_reset(CURL* handle) {
  ON_DEMAND(curl_easy_reset, void(), handle);
}
void curl_easy_cleanup(CURL* handle) {
  ON_DEMAND(curl_easy_cleanup, void(), handle);
}
const char* curl_easy_strerror(CURLcode code) {
  ON_DEMAND(curl_easy_strerror, "The HTTP library couldn't be loaded", code);
}
curl_slist* curl_slist_append(curl_slist* list, const char* text) {
  ON_DEMAND(curl_slist_append, nullptr, list, text);
}
void curl_slist_free_all(curl_slist* list) {
  ON_DEMAND(curl_slist_free_all, void(), list);
}
CURLU* curl_url() {
  ON_DEMAND(curl_url, nullptr);
}
void curl_url_cleanup(CURLU* url) {
  ON_DEMAND(curl_url_cleanup, void(), url);
}
CURLUcode curl_url_set(CURLU* url, CURLUPart what, const char* part, unsigned int flags) {
  ON_DEMAND(curl_url_set, CURLUE_OUT_OF_MEMORY, url, what, part, flags);
}
CURLUcode curl_url_get(CURLU* url, CURLUPart what, char** part, unsigned int flags) {
  ON_DEMAND(curl_url_get, CURLUE_OUT_OF_MEMORY, url, what, part, flags);
}
void curl_free(void* memory) {
  ON_DEMAND(curl_free, void(), memory);
}

// Every value that goes through these two is a pointer or a 64-bit number, which travel alike.
CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...) {
  va_list rest;
  va_start(rest, option);
  void* const value = va_arg(rest, void*);
  va_end(rest);
  ON_DEMAND(curl_easy_setopt, CURLE_FAILED_INIT, handle, option, value);
}

CURLcode curl_easy_getinfo(CURL* handle, CURLINFO info, ...) {
  va_list rest;
  va_start(rest, info);
  void* const value = va_arg(rest, void*);
  va_end(rest);
  ON_DEMAND(curl_easy_getinfo, CURLE_FAILED_INIT, handle, info, value);
}

}  // extern "C"
