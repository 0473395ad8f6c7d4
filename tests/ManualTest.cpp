// The man page and the completions against the help that users see: what one of them tells, all of them know.
#include <gmock/gmock.h>

#include <regex>

#include "Cases.h"
#include "ProgramRun.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

const std::filesystem::path kManual = VELAGNSS_MANUAL_DIR;

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

// What the help of one command says there is.
struct S_Help {
  std::string command;  // "geo time", empty for the program
  std::vector<std::string> options;
  std::vector<std::string> commands;
};

class Manual : public Program {
 protected:
  // The help of a command and of all below it.
  std::vector<S_Help> Helps(const std::string& command = "") const {
    std::vector<S_Help> helps{{command, {}, {}}};
    std::istringstream lines(Run("velagnss " + command + " --help").output);
    bool isCommands = false;
    for (std::string line; std::getline(lines, line);) {
      std::smatch found;
      if (std::regex_search(line, found, std::regex("^  (-\\w|--[-\\w]+)(?:,(--[-\\w]+))?\\b")))
        for (std::size_t i = 1; i < found.size(); ++i)
          if (found[i].matched) helps[0].options.push_back(found[i]);
      if (isCommands && std::regex_search(line, found, std::regex("^  (\\w+) "))) helps[0].commands.push_back(found[1]);
      isCommands = line == "Subcommands:" || (isCommands && !line.empty());
    }
    for (const std::string& below : helps[0].commands)
      for (const S_Help& help : Helps(command.empty() ? below : command + ' ' + below)) helps.push_back(help);
    return helps;
  }

  // What bash offers for the last word of a command line.
  std::vector<std::string> BashOffers(const std::string& words) const {
    return Words(Run("compopt() { :; }; . " + (kManual / "velagnss").string() + "; COMP_WORDS=(velagnss " + words +
                     "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _velagnss; echo \"${COMPREPLY[@]}\"")
                     .output);
  }
};

TEST_F(Manual, HelpIsReadRight) {
  const std::vector<S_Help> helps = Helps();
  ASSERT_EQ(helps.size(), 10u);  // the program, five commands, four calculations
  EXPECT_THAT(helps[1].options, Contains("--output"));
  EXPECT_THAT(helps[1].options, Contains("-n"));
}

TEST_F(Manual, ManPageHasEachOptionOfEachCommand) {
  const std::string page = Slurp(kManual / "velagnss.1");
  for (const S_Help& help : Helps()) {
    const std::string heading = help.command.empty() ? ".SH OPTIONS\n" : ".SS velagnss " + help.command + '\n';
    const std::size_t begin = page.find(heading);
    ASSERT_NE(begin, std::string::npos) << heading;
    const std::string section = page.substr(begin, page.find("\n.S", begin) - begin);
    for (const std::string& option : help.options)
      EXPECT_THAT(section, HasSubstr("\\fB" + std::regex_replace(option, std::regex("-"), "\\-") + "\\fR"))
          << help.command;
  }
}

TEST_F(Manual, BashOffersEachOptionAndCommand) {
  for (const S_Help& help : Helps()) {
    const std::vector<std::string> options = BashOffers(help.command + " -");
    for (const std::string& option : help.options) EXPECT_THAT(options, Contains(option)) << help.command;
    if (help.commands.empty()) continue;
    EXPECT_EQ(BashOffers(help.command + " ''"), help.commands);
  }
}

// fish and zsh themselves are asked below, where they are; the texts are looked at everywhere.
TEST_F(Manual, ZshAndFishKnowEachOption) {
  const std::string zsh = Slurp(kManual / "_velagnss");
  const std::string fish = Slurp(kManual / "velagnss.fish");
  for (const S_Help& help : Helps()) {
    const std::string function = std::regex_replace("_velagnss " + help.command, std::regex(" +$"), "");
    const std::size_t begin = zsh.find('\n' + std::regex_replace(function, std::regex(" "), "_") + "() {");
    ASSERT_NE(begin, std::string::npos) << help.command;
    const std::string body = zsh.substr(begin, zsh.find("\n}\n", begin) - begin);
    for (const std::string& option : help.options) {
      EXPECT_TRUE(std::regex_search(body, std::regex("['\\)]" + option + "[=+]?\\["))) << help.command << ' ' << option;
      const std::string name = option.starts_with("--") ? "-l " + option.substr(2) : "-s " + option.substr(1);
      EXPECT_TRUE(std::regex_search(fish, std::regex("__velagnss_at '" + help.command + "'\"[^\n]* " + name + " ")))
          << help.command << ' ' << option;
    }
  }
}

struct S_OfferCase {
  const char* name;
  const char* words;  // after the program's name; the last one is completed
  std::vector<std::string> offers;
};

// clang-format off
const S_OfferCase kOffers[] = {
    {"BeginOfCommand",      "de",                       {"decode"}},
    {"Format",              "convert --to g",           {"gpx", "geojson"}},
    {"FormatAfterSign",     "convert --to = k",         {"kml"}},
    {"EmptyAfterSign",      "convert --run-date =",     {"stream", "now"}},
    {"SecondOfAList",       "decode --proto nmea,rt",   {"nmea,rtcm3"}},
    {"SideOfConvert",       "geo convert --from e",     {"ecef"}},
    {"SideOfTime",          "geo time --from m",        {"mjd"}},
    {"CommandBehindFlag",   "-v geo l",                 {"look"}},
    {"FilesAreTheShells",   "decode -o ''",             {}},
    {"NothingForANumber",   "decode -n ''",             {}},
};
// clang-format on

TEST_ROWS_F(BashOffer, Offers, Manual, kOffers, row) { EXPECT_EQ(BashOffers(row.words), row.offers); }

struct S_ToolCase {
  const char* name;
  const char* tool;     // without it the case is skipped: .ci/run has all of them
  const char* command;  // in the manual's directory
  const char* output;
};

// clang-format off
const S_ToolCase kTools[] = {
    {"Mandoc",      "mandoc", "mandoc -T lint -W warning velagnss.1", ""},
    {"Groff",       "groff",  "groff -man -ww -T utf8 velagnss.1 2>&1 >/dev/null", ""},
    {"ZshSyntax",   "zsh",    "zsh -n _velagnss", ""},
    {"FishValue",   "fish",   "fish -c \"source velagnss.fish; complete -C 'velagnss convert --to gp'\" | cut -f 1", "gpx\n"},
    {"FishOption",  "fish",   "fish -c \"source velagnss.fish; complete -C 'velagnss geo time --fr'\" | cut -f 1", "--from\n"},
    {"FishCommand", "fish",   "fish -c \"source velagnss.fish; complete -C 'velagnss de'\" | cut -f 1", "decode\n"},
};
// clang-format on

TEST_ROWS_F(ManualTool, HasNothingToSay, Manual, kTools, tool) {
  if (Run(std::string("command -v ") + tool.tool).code != 0) GTEST_SKIP() << tool.tool << " is not here";
  const Outcome outcome = Run("cd '" + kManual.string() + "'; export HOME=$OLDPWD; " + tool.command);
  EXPECT_EQ(outcome.output + outcome.messages, tool.output);
}

}  // namespace
