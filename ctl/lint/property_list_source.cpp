#include "ctl/lint/property_list_source.h"

#include <fmt/format.h>

#include "ctl/lint/xml_property_list.h"
#include "vorlu/state/property_list.h"

namespace vorlu::ctl {
namespace {

LocatedValue copyOf(Node& node) {
  LocatedValue value{.kind = node.kind()};
  switch (value.kind) {
    case NodeKind::boolean:
      value.boolean = node.boolean();
      break;
    case NodeKind::integer:
    case NodeKind::number:
      value.integer = node.integer();
      break;
    case NodeKind::string:
      value.text = node.text();
      break;
    case NodeKind::array:
      node.forEachElement([&](Node& element) { value.elements.push_back(copyOf(element)); });
      break;
    case NodeKind::dictionary:
      node.forEachMember([&](std::string_view key, Node& member) {
        value.members.push_back({std::string(key), {}, copyOf(member)});
      });
      break;
    default:
      break;
  }
  return value;
}

std::optional<LocatedValue> readBinary(std::string_view bytes, Findings& findings) {
  LocatedValue root;
  if (const Status read = readPropertyList(bytes, [&](Node& node) { root = copyOf(node); }); read) return root;
  findings.error({}, "", "this binary property list is damaged",
                 "write it anew, with \"plutil -convert xml1\" for example");
  return std::nullopt;
}

/// What a file is that is no property list, and what to do about it.
void tellWhatItIs(std::string_view bytes, Findings& findings) {
  constexpr Position start{1, 1};
  // A signed profile is a DER sequence.
  if (bytes.size() > 2 && bytes[0] == '\x30' && (static_cast<unsigned char>(bytes[1]) & 0x80U) != 0)
    return findings.error(
        {}, "", "this profile is signed, so its content can't be read as it is",
        "take the signature off first: openssl smime -verify -noverify -inform der -in FILE -out PLAIN");
  if (bytes.find_first_not_of(" \t\r\n") == std::string_view::npos)
    return findings.error(start, "", "the file is empty", "is this the right file?");
  findings.error(start, "", "this is neither an XML nor a binary property list",
                 "give a property list or a .mobileconfig file; \"plutil -lint\" tells on a Mac what it is");
}

}  // namespace

std::optional<LocatedValue> readLocatedPropertyList(std::string_view bytes, Findings& findings) {
  if (bytes.starts_with("bplist")) return readBinary(bytes, findings);
  if (looksLikeXml(bytes)) return readXmlPropertyList(bytes, findings);
  tellWhatItIs(bytes, findings);
  return std::nullopt;
}

}  // namespace vorlu::ctl
