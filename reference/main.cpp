#include <fmt/format.h>

#include <cstdio>

#include "reference/documents.h"
#include "reference/text_file.h"

using namespace vorlu;

/// vorlu-reference SOURCE_TREE: writes what is made from the tables of keys.
int main(int count, char** arguments) {
  if (count != 2) {
    fmt::print(stderr, "usage: vorlu-reference SOURCE_TREE\n");
    return 64;
  }
  const std::string tree = arguments[1];
  const auto documents = reference::documents(tree);
  if (!documents) {
    fmt::print(stderr, "vorlu-reference: {}\n", documents.error());
    return 1;
  }
  for (const reference::Document& document : *documents) {
    const Status written = reference::writeTextFile(tree + "/" + document.path, document.text);
    if (!written) {
      fmt::print(stderr, "vorlu-reference: {}\n", written.error());
      return 1;
    }
    fmt::print("{}\n", document.path);
  }
}
