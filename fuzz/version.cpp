#include "vorlu/detection/version.h"

#include "fuzz/target.h"

namespace vorlu::fuzz {

/// Three versions, parted by zero bytes: the order is one.
FUZZ_TARGET(version) {
  Input in(input);
  const std::string a = in.text(), b = in.text(), c = in.rest();
  const int ab = compareVersions(a, b), bc = compareVersions(b, c), ac = compareVersions(a, c);
  for (const auto& text : {a, b, c}) expect(compareVersions(text, text) == 0, "a version is as new as itself", text);
  expect(ab >= -1 && ab <= 1 && compareVersions(b, a) == -ab, "who is newer doesn't depend on who is asked", a, b);
  if (ab <= 0 && bc <= 0) expect(ac <= 0, "the order is transitive", a + " " + b, c);
  if (ab == 0) expect(ac == bc, "equal versions compare alike", a + " " + b, c);
}

}  // namespace vorlu::fuzz
