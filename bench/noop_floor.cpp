// The least that an update check must do: decode the catalog once into texts of its own, and read the property list of
// every installed app twice. With the agent's libraries and nothing else.
//
//   bench-floor CATALOG.json

#include <plist/plist.h>
#include <simdjson.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return {};
  std::string text(static_cast<std::size_t>(in.tellg()), '\0');
  in.seekg(0);
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  return text;
}

struct Entry {
  std::vector<std::string> texts;
  std::vector<std::string> listed;
  std::vector<std::int64_t> numbers;
  std::vector<bool> flags;
  std::string path;
};

std::vector<Entry> decode(simdjson::ondemand::document& document) {
  std::vector<Entry> entries;
  for (auto element : document.get_array()) {
    Entry& entry = entries.emplace_back();
    for (auto member : element.get_object()) {
      const std::string_view key = member.unescaped_key();
      auto value = member.value();
      switch (value.type()) {
        case simdjson::ondemand::json_type::string:
          entry.texts.emplace_back(std::string_view(value));
          if (key == "appPath") entry.path = entry.texts.back();
          break;
        case simdjson::ondemand::json_type::boolean:
          entry.flags.push_back(bool(value));
          break;
        case simdjson::ondemand::json_type::number:
          entry.numbers.push_back(std::int64_t(value));
          break;
        case simdjson::ondemand::json_type::array:
          for (auto item : value.get_array()) entry.listed.emplace_back(std::string_view(item));
          break;
        default:
          break;
      }
    }
  }
  return entries;
}

/// Length of the version text, so that nothing is optimised away.
std::size_t readVersion(const std::string& bundle) {
  const std::string bytes = readFile(bundle + "/Contents/Info.plist");
  if (bytes.empty()) return 0;
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  std::uint64_t length = 0;
  plist_get_string_ptr(plist_dict_get_item(root, "CFBundleShortVersionString"), &length);
  plist_free(root);
  return length;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: bench-floor CATALOG.json\n", stderr);
    return 2;
  }
  auto text = simdjson::padded_string::load(argv[1]);
  simdjson::ondemand::parser parser;
  simdjson::ondemand::document document = parser.iterate(text.value());
  const std::vector<Entry> entries = decode(document);
  std::size_t read = 0;
  for (int pass = 0; pass < 2; ++pass) {
    for (const Entry& entry : entries) read += readVersion(entry.path);
  }
  std::printf("%zu entries, %zu bytes of versions\n", entries.size(), read);
  return 0;
}
