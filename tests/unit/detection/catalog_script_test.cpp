#include "vorlu/detection/catalog_script.h"

#include "tests/unit/detection/detection_run.h"

namespace vorlu::test {
namespace {

TEST(PrepareScript, JoinsTheLinesThatCount) {
  const struct {
    std::string script, interpreter, text;
  } cases[] = {
      {"#!/bin/bash\necho a\nexit 0\n", "/bin/bash", "echo a"},
      {"#!/bin/sh\r\necho a\r\n\r\necho b", "/bin/sh", "echo a;echo b"},
      {"echo a", "/bin/zsh", "echo a"},
      {"echo #!/bin/sh\necho #!/bin/bash\necho b", "/bin/bash", "echo b"},
      {"if true; then\necho a\nfi", "/bin/zsh", "if true; then echo a;fi"},
      {"for x in a b; do\nif false; then\necho a\nelse\necho b\nfi\ndone", "/bin/zsh",
       "for x in a b; do if false; then echo a;else echo b;fi;done"},
      {"a\vb\fc\xc2\x85"
       "d\xe2\x80\xa8"
       "e\xe2\x80\xa9"
       "f\rg",
       "/bin/zsh", "a;b;c;d;e;f;g"},
      {"[ -f x ] || exit 1\necho é", "/bin/zsh", "echo é"},
      {"", "/bin/zsh", ""},
  };
  for (const auto& c : cases) {
    const PreparedScript prepared = prepareScript(c.script);
    EXPECT_EQ(prepared.interpreter, c.interpreter) << c.script;
    EXPECT_EQ(prepared.text, c.text);
  }
}

TEST(CatalogScript, GivesTrimmedOutputAndTellsWhyThereIsNone) {
  const struct {
    Answer answer;
    std::optional<std::string> output;
    Lines messages;
  } cases[] = {
      {{"\xe3\x80\x80\t 1.2 \xc3\xa0 3\xc2\xa0\r\n\xe2\x80\x89\xe2\x80\xa8"}, "1.2 \xc3\xa0 3", {}},
      {{" \n"}, "", {}},
      {{.output = "1.0\n", .status = 1}, "1.0", {}},
      {{.output = "1.0", .timedOut = true},
       std::nullopt,
       {"Error: A catalog script was stopped because it ran longer than 1800 seconds"}},
  };
  for (const auto& c : cases) {
    DetectionRun run;
    run.platform.processes.on("zsh: echo a;echo b", c.answer);
    EXPECT_EQ(scriptOutput(run.vorlu, "echo a\necho b"), c.output);
    EXPECT_EQ(run.messages(), c.messages);
  }
  DetectionRun run;
  run.platform.processes.otherwise({.output = "", .starts = false});
  EXPECT_EQ(runScriptForOutput(run.vorlu, "#!/bin/sh\nx"), "");
  EXPECT_THAT(run.messages(), testing::ElementsAre(
                                  testing::StartsWith("Error: A catalog script could not be started with /bin/sh - ")));
}

}  // namespace
}  // namespace vorlu::test
