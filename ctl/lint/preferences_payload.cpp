#include "ctl/lint/preferences_payload.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "ctl/lint/property_list_source.h"
#include "ctl/lint/spelling.h"
#include "vorlu/state/preferences.h"
#include "vorlu/state/property_list.h"

namespace vorlu::ctl {
namespace {

constexpr std::string_view domain = "com.mosk.vorlu.preferences";
constexpr std::string_view formerDomain = "com.mosk.update.preferences";
constexpr std::string_view customSettings = "com.apple.ManagedClient.preferences";

bool isDomain(std::string_view text) {
  return text == domain || text == formerDomain;
}

/// Meant for the agent, but by a name that it doesn't know.
bool isNearDomain(std::string_view text) {
  return text.starts_with("com.mosk.") || nearestWord(text, {domain, formerDomain});
}

std::string_view textOf(const LocatedValue& dictionary, std::string_view key) {
  const LocatedValue* value = dictionary.find(key);
  return value != nullptr && value->kind == NodeKind::string ? std::string_view(value->text) : "";
}

/// What a Mac asks of every payload, the profile itself included.
void checkEnvelope(const LocatedValue& payload, const std::string& path, Findings& findings) {
  for (const char* const key : {"PayloadType", "PayloadIdentifier", "PayloadUUID", "PayloadVersion"}) {
    if (payload.find(key) == nullptr)
      findings.error(payload.at, memberPath(path, key), "is missing, and a Mac refuses a profile without it",
                     "add it, or let your management system write the profile");
  }
}

/// A payload of the domain, whose own keys aren't settings.
LocatedValue withoutPayloadKeys(LocatedValue payload) {
  constexpr std::array own = {
      "PayloadType",        "PayloadIdentifier",   "PayloadUUID",    "PayloadVersion",           "PayloadDisplayName",
      "PayloadDescription", "PayloadOrganization", "PayloadEnabled", "PayloadRemovalDisallowed", "PayloadScope"};
  std::erase_if(payload.members,
                [&](const LocatedMember& member) { return std::ranges::find(own, member.key) != own.end(); });
  return payload;
}

class ProfileReader {
 public:
  explicit ProfileReader(Findings& findings) : findings_(findings) {}

  std::vector<SettingsInFile> read(const LocatedValue& profile) {
    checkEnvelope(profile, "", findings_);
    const LocatedValue& payloads = *profile.find("PayloadContent");
    for (std::size_t index = 0; index < payloads.elements.size(); ++index)
      readPayload(payloads.elements[index], elementPath("PayloadContent", index));
    if (found_.empty()) tellMissing(payloads);
    for (std::size_t index = 1; index < found_.size(); ++index)
      findings_.warning(found_[index].value.at, found_[index].path,
                        fmt::format("is a second set of settings beside {}, and what a Mac makes of both isn't sure",
                                    found_.front().path),
                        "put all keys into one payload");
    return std::move(found_);
  }

 private:
  void readPayload(const LocatedValue& payload, const std::string& path) {
    const std::string_view type = textOf(payload, "PayloadType");
    if (isDomain(type)) {
      checkEnvelope(payload, path, findings_);
      found_.push_back({withoutPayloadKeys(payload), path});
    } else if (type == customSettings) {
      checkEnvelope(payload, path, findings_);
      if (const LocatedValue* content = payload.find("PayloadContent"))
        readCustomSettings(*content, memberPath(path, "PayloadContent"));
    } else if (isNearDomain(type)) {
      tellNearMiss(*payload.find("PayloadType"), memberPath(path, "PayloadType"), type);
    }
  }

  void readCustomSettings(const LocatedValue& content, const std::string& path) {
    for (const LocatedMember& member : content.members) {
      const std::string memberAt = memberPath(path, member.key);
      if (isDomain(member.key))
        readManagement(member.value, memberAt);
      else if (isNearDomain(member.key))
        tellNearMiss(member.value, memberAt, member.key);
    }
  }

  /// How a domain is managed: only what is forced reaches the agent.
  void readManagement(const LocatedValue& management, const std::string& path) {
    for (const LocatedMember& member : management.members) {
      if (member.key != "Forced") {
        findings_.error(member.at, memberPath(path, member.key),
                        "isn't forced, so the agent doesn't see these settings", "put them under Forced");
        nearMiss_ = true;
        continue;
      }
      const auto& forced = member.value.elements;
      for (std::size_t index = 0; index < forced.size(); ++index) {
        const std::string at = memberPath(elementPath(memberPath(path, "Forced"), index), "mcx_preference_settings");
        if (const LocatedValue* settings = forced[index].find("mcx_preference_settings"))
          found_.push_back({*settings, at});
      }
    }
  }

  void tellNearMiss(const LocatedValue& value, std::string path, std::string_view written) {
    nearMiss_ = true;
    findings_.error(value.at, std::move(path),
                    fmt::format("\"{}\" isn't the agent's preference domain, so none of these settings count", written),
                    fmt::format("write {}", domain));
  }

  void tellMissing(const LocatedValue& payloads) {
    if (!nearMiss_)
      findings_.error(payloads.at, "PayloadContent", "holds no settings of the agent",
                      fmt::format("add a payload of the type {}, or a custom settings payload that forces it", domain));
  }

  Findings& findings_;
  std::vector<SettingsInFile> found_;
  bool nearMiss_ = false;
};

bool isProfile(const LocatedValue& root) {
  const LocatedValue* content = root.find("PayloadContent");
  return content != nullptr && content->kind == NodeKind::array;
}

}  // namespace

std::vector<SettingsInFile> settingsOf(const LocatedValue& root, Findings& findings) {
  if (root.kind != NodeKind::dictionary) {
    findings.error(root.at, "", fmt::format("preferences are a dictionary, and this is {}", describe(root.kind)),
                   "is this the right file?");
    return {};
  }
  if (isProfile(root)) return ProfileReader(findings).read(root);
  return {{root, ""}};
}

std::string deliveredList(const std::string& bytes) {
  Findings unused;
  const std::optional<LocatedValue> root = readLocatedPropertyList(bytes, unused);
  if (!root) return bytes;
  const std::vector<SettingsInFile> found = settingsOf(*root, unused);
  const bool isInProfile = !found.empty() && !found.front().path.empty();
  return isInProfile ? encodePropertyList(decodeLocated<CustomPrefs>(found.front().value)) : bytes;
}

}  // namespace vorlu::ctl
