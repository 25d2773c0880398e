#include "ctl/lint/located_value.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace vorlu::ctl {
namespace {

/// Takes the first step of a path: a key up to "." or "[", or an index in brackets.
std::string_view takeStep(std::string_view& path) {
  if (path.starts_with('.')) path.remove_prefix(1);
  const std::size_t end = path.starts_with('[') ? path.find(']') + 1 : std::min(path.find_first_of(".["), path.size());
  const std::string_view step = path.substr(0, end);
  path.remove_prefix(step.size());
  return step;
}

const LocatedValue* child(const LocatedValue& value, std::string_view step) {
  if (!step.starts_with('[')) return value.find(step);
  std::size_t index = 0;
  std::from_chars(step.data() + 1, step.data() + step.size(), index);
  return index < value.elements.size() ? &value.elements[index] : nullptr;
}

}  // namespace

const LocatedValue* LocatedValue::find(std::string_view key) const {
  const auto found =
      std::find_if(members.rbegin(), members.rend(), [&](const auto& member) { return member.key == key; });
  return found == members.rend() ? nullptr : &found->value;
}

LocatedValue* LocatedValue::find(std::string_view key) {
  return const_cast<LocatedValue*>(std::as_const(*this).find(key));
}

std::string memberPath(std::string_view parent, std::string_view key) {
  return parent.empty() ? std::string(key) : fmt::format("{}.{}", parent, key);
}

std::string elementPath(std::string_view parent, std::size_t index) {
  return fmt::format("{}[{}]", parent, index);
}

const LocatedValue& locate(const LocatedValue& root, std::string_view path) {
  const LocatedValue* value = &root;
  while (!path.empty()) {
    const LocatedValue* next = child(*value, takeStep(path));
    if (next == nullptr) break;
    value = next;
  }
  return *value;
}

void LocatedNode::forEachElement(const std::function<void(Node&)>& read) {
  for (const LocatedValue& element : value_.elements) {
    LocatedNode node(element);
    read(node);
  }
}

void LocatedNode::forEachMember(const std::function<void(std::string_view, Node&)>& read) {
  for (const LocatedMember& member : value_.members) {
    LocatedNode node(member.value);
    read(member.key, node);
  }
}

}  // namespace vorlu::ctl
