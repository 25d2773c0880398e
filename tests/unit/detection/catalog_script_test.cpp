#include "vorlu/detection/catalog_script.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

TEST(PrepareScript, JoinsTheLinesThatCount) {
  const struct {
    std::string script, interpreter, text;
  } cases[] = {
      {"#!/bin/bash\necho a\nexit 0\n", "/bin/bash", "echo a"},
      {"#!/bin/sh\r\necho a\r\n\r\n \t\necho b", "/bin/sh", "echo a;echo b"},
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
  AgentRun run;
  const std::string line = "zsh: echo a;echo b";
  run.mac.processes.on(line, {"\xe3\x80\x80\t 1.2 \xc3\xa0 3\xc2\xa0\r\n\xe2\x80\x89\xe2\x80\xa8"});
  run.mac.processes.on(line, {.output = " \n", .status = 1});
  run.mac.processes.on(line, {.output = "1.0", .timedOut = true});
  run.mac.processes.on(line, {.starts = false});
  const auto output = [&run] { return scriptOutput(run.vorlu, "echo a\necho b"); };
  EXPECT_EQ(output(), "1.2 \xc3\xa0 3");
  EXPECT_EQ(output(), "");
  EXPECT_EQ(run.messages(), Lines{});
  EXPECT_EQ(output(), std::nullopt);
  EXPECT_EQ(run.messages(), Lines{"Error: A catalog script was stopped because it ran longer than 1800 seconds"});
  EXPECT_EQ(output(), std::nullopt);
  EXPECT_THAT(run.messages(),
              testing::ElementsAre(testing::StartsWith("Error: A catalog script could not be started")));
}

}  // namespace
}  // namespace vorlu::test
