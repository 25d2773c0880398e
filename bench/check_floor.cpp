// The least that an update check with nothing due can be: three requests, the site's sealed texts opened, the catalog
// decoded once, every app looked for twice (the check, and the inventory after it) with its property list read, the
// state written as often and as durably as documented, and the system's tools started that the check and its report
// ask.
//
//   bench-check-floor CATALOG URL TOOLS KEY FOLDER
//
// TOOLS has a tool's words in each line, separated by blanks; KEY is the agents' private key, FOLDER the state's.

#include <curl/curl.h>
#include <fcntl.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <sstream>

#include "bench/floor_parts.h"

namespace {

using namespace vorlu;

constexpr int sealedTexts = 5;    // two URLs, the method, the customer, and the key of the inventory
constexpr int durableWrites = 9;  // seven of run data, the error record, the file of the network measurement

std::size_t keep(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

bool request(const std::string& base) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  CURL* handle = curl_easy_init();
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, keep);
  bool answered = true;
  for (const char* path : {"/connectivity", "/timestamp", "/connectivity"}) {
    curl_easy_setopt(handle, CURLOPT_URL, (base + path).c_str());
    curl_easy_setopt(handle, CURLOPT_NOBODY, std::string(path) == "/connectivity" ? 1L : 0L);
    answered = curl_easy_perform(handle) == CURLE_OK && answered;
  }
  curl_easy_cleanup(handle);
  return answered;
}

std::string crypt(EVP_PKEY* key, const std::string& input, bool encrypt) {
  const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(EVP_PKEY_CTX_new(key, nullptr),
                                                                            &EVP_PKEY_CTX_free);
  (encrypt ? EVP_PKEY_encrypt_init : EVP_PKEY_decrypt_init)(context.get());
  EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
  EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha512());
  std::string output(512, '\0');
  std::size_t size = output.size();
  const auto step = encrypt ? EVP_PKEY_encrypt : EVP_PKEY_decrypt;
  if (step(context.get(), reinterpret_cast<unsigned char*>(output.data()), &size,
           reinterpret_cast<const unsigned char*>(input.data()), input.size()) <= 0)
    size = 0;
  output.resize(size);
  return output;
}

bool openTexts(const char* keyFile) {
  const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(keyFile, "r"), &std::fclose);
  if (!file) return false;
  const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
      PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr), &EVP_PKEY_free);
  const std::string text = "http://127.0.0.1:8642/connectivity";
  const std::string sealed = crypt(key.get(), text, true);
  for (int left = sealedTexts; left > 0; --left)
    if (crypt(key.get(), sealed, false) != text) return false;
  return true;
}

std::size_t lookForApps(const std::vector<floors::Entry>& entries) {
  std::size_t bytes = 0;
  for (const floors::Entry& entry : entries) {
    const std::size_t length = floors::readVersion(entry.path);
    struct stat status {};
    if (length == 0) stat(entry.alternatePath.c_str(), &status);
    bytes += length;
  }
  return bytes;
}

bool writeState(const std::string& folder) {
  const std::string content(1500, 'x');
  const std::string path = folder + "/floor";
  bool written = true;
  for (int left = durableWrites; left > 0; --left) {
    const int file = open((path + ".new").c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    written = write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()) && written;
    written = fsync(file) == 0 && close(file) == 0 && written;
    written = std::rename((path + ".new").c_str(), path.c_str()) == 0 && written;
  }
  return written;
}

std::size_t askTools(const char* list) {
  std::size_t bytes = 0;
  for (const std::string& line : floors::lines(list)) {
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;) words.push_back(word);
    bytes += floors::spawn(words);
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fputs("usage: bench-check-floor CATALOG URL TOOLS KEY FOLDER\n", stderr);
    return 2;
  }
  if (!request(argv[2]) || !openTexts(argv[4]) || !writeState(argv[5])) {
    std::fputs("bench-check-floor: a request, the key or a write failed\n", stderr);
    return 1;
  }
  const std::vector<floors::Entry> entries = floors::decode(argv[1]);
  const std::size_t bytes = lookForApps(entries) + lookForApps(entries) + askTools(argv[3]);
  std::printf("%zu entries, %zu bytes\n", entries.size(), bytes);
  return 0;
}
