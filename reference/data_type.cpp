#include "reference/data_type.h"

namespace vorlu::reference {

std::string_view dataType(KeyType type, std::string_view section) {
  switch (type) {
    case KeyType::text:
      return "string";
    case KeyType::integer:
      return "integer";
    case KeyType::boolean:
      return "boolean";
    case KeyType::textList:
      return "array";
    case KeyType::section:
      return section;
  }
  return {};
}

}  // namespace vorlu::reference
