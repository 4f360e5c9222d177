// The manual page and the completion know what the help knows.
#include "program.h"

#include <regex>
#include <set>

namespace {

std::set<std::string> optionsIn(const std::string& text) {
  static const std::regex form("--[a-z][a-z-]*[a-z]");
  return {std::sregex_token_iterator(text.begin(), text.end(), form), std::sregex_token_iterator()};
}

}  // namespace

class CommandPagesTest : public ZelweldTest {
protected:
  // What bash offers for the last of the words.
  std::set<std::string> offered(const std::string& words) const {
    const TRun run =
        shell("bash -c 'source " ZELWELD_PAGES "/zelweld.bash; COMP_WORDS=(zelweld " + words +
              "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _zelweld; printf \"%s\\n\" \"${COMPREPLY[@]}\"'");
    EXPECT_EQ(run.err, "");
    const auto lines = linesOf(run.out);
    return {lines.begin(), lines.end()};
  }

  std::set<std::string> commands() const {
    std::set<std::string> names = offered("\"\"");
    for (const char* const option : {"--help", "--version"}) EXPECT_EQ(names.erase(option), 1U) << option;
    return names;
  }
};

TEST_F(CommandPagesTest, CompletionOffersEveryOptionOfTheHelp) {
  EXPECT_EQ(commands().count("compare"), 1U);
  for (const std::string& command : commands()) {
    const std::string help = zelweldOk(command + " --help").out;
    std::set<std::string> known = optionsIn(help.substr(0, help.find("Example")));
    for (const std::string& option : offered(command + " --")) {
      EXPECT_EQ(known.erase(option), 1U) << command << " " << option;
    }
    // Texts name an option of another subcommand now and then, with its name before it.
    for (const std::string& option : known) EXPECT_NE(help.find(" " + option), std::string::npos) << option;
    EXPECT_LE(known.size(), 1U) << command << ": " << *known.begin();
  }
  using TSet = std::set<std::string>;
  EXPECT_EQ(offered("track --type co"), TSet{"corner"});
  EXPECT_EQ(offered("sweep f --channel red"), (TSet{"red", "red-excess"}));
  EXPECT_EQ(offered("params --format j"), (TSet{"job", "json"}));
  writeFile(folder / "frame.png", "");
  EXPECT_EQ(offered("track fr"), TSet{"frame.png"});
}

TEST_F(CommandPagesTest, ManualPageShowsEveryOptionAndEveryLineOfTheHelp) {
  if (shell("command -v man").exitCode != 0) GTEST_SKIP() << "man is not installed";
  const TRun page = shell("MANWIDTH=500 man --warnings -l " ZELWELD_PAGES "/zelweld.1 | cat");
  EXPECT_EQ(page.err, "");
  for (const std::string& command : commands()) {
    for (const std::string& option : offered(command + " --")) {
      EXPECT_NE(page.out.find(option), std::string::npos) << command << " " << option;
    }
    const std::string help = zelweldOk(command + " --help").out;
    for (const std::string& line : linesOf(help.substr(help.find("Example")))) {
      EXPECT_NE(page.out.find(line), std::string::npos) << line;
    }
  }
}
