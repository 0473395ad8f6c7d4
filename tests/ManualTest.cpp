// The man page and the completions have the same options as the help.
#include <gmock/gmock.h>

#include <regex>

#include "Cases.h"
#include "ProgramRun.h"

namespace {

using testing::HasSubstr;
using testing::IsSupersetOf;

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
    std::istringstream lines(Run("COLUMNS=79 velagnss " + command + " --help").output);
    bool isCommands = false;
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 79) << command;
      std::smatch found;
      if (std::regex_search(line, found, std::regex("^  (-\\w|--[-\\w]+)(?:,(--[-\\w]+))?\\b")))
        for (std::size_t i = 1; i < found.size(); ++i)
          if (found[i].matched) helps[0].options.push_back(found[i]);
      if (isCommands && std::regex_search(line, found, std::regex("^  (\\w[-\\w]*) ")))
        helps[0].commands.push_back(found[1]);
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

// The texts for zsh and fish are looked at everywhere; the shells themselves are asked below, where they are.
TEST_F(Manual, ManPageAndShellsKnowEachOptionOfEachCommand) {
  const std::vector<S_Help> helps = Helps();
  ASSERT_EQ(helps.size(), 21u);  // the program, all commands, four calculations
  EXPECT_THAT(helps[1].options, IsSupersetOf({"--output", "-n"}));
  const std::string page = Slurp(kManual / "velagnss.1");
  const std::string zsh = Slurp(kManual / "_velagnss");
  const std::string fish = Slurp(kManual / "velagnss.fish");
  const auto section = [](const std::string& text, const std::string& heading, const char* nextHeading) {
    const std::size_t begin = text.find(heading);
    EXPECT_NE(begin, std::string::npos) << heading;
    return text.substr(std::min(begin, text.size()), text.find(nextHeading, begin + 1) - begin);
  };
  const auto roff = [](const std::string& text) { return std::regex_replace(text, std::regex("-"), "\\-"); };
  for (const S_Help& help : helps) {
    const std::string& command = help.command;
    const std::string manual =
        section(page, command.empty() ? ".SH OPTIONS\n" : ".SS velagnss " + roff(command) + '\n', "\n.S");
    const std::string function = command.empty() ? "" : '_' + std::regex_replace(command, std::regex(" "), "_");
    const std::string zshBody = section(zsh, "\n_velagnss" + function + "() {", "\n}\n");
    EXPECT_THAT(BashOffers(command + " -"), IsSupersetOf(help.options)) << command;
    if (!help.commands.empty()) {
      EXPECT_EQ(BashOffers(command + " ''"), help.commands);
    }
    for (const std::string& option : help.options) {
      EXPECT_THAT(manual, HasSubstr("\\fB" + roff(option) + "\\fR")) << command;
      EXPECT_TRUE(std::regex_search(zshBody, std::regex("['\\)]" + option + "[=+]?\\["))) << command << ' ' << option;
      const std::string name = option.starts_with("--") ? "-l " + option.substr(2) : "-s " + option.substr(1);
      EXPECT_TRUE(std::regex_search(fish, std::regex("__velagnss_at '" + command + "'\"[^\n]* " + name + " ")))
          << command << ' ' << option;
    }
  }
}

TEST_F(Manual, ManPageExplainsEachProtocol) {
  const std::string message = Run("velagnss stat --search x").messages;
  const std::size_t list = message.find("known: ") + 7;
  const std::string page = Slurp(kManual / "velagnss.1");
  for (const std::string& name : Words(message.substr(list, message.find(';', list) - list)))
    EXPECT_NE(page.find(".TP\n\\fB" + name + "\\fR", page.find(".SH PROTOCOLS")), std::string::npos) << name;
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
    {"Message",             "decode --msg BIN9",        {"BIN93", "BIN94", "BIN95"}},
    {"MessageOfRtcm",       "extract --msg GGA,104",    {"GGA,1041", "GGA,1042", "GGA,1044", "GGA,1045", "GGA,1046"}},
    {"MessageByAddress",    "decode --msg HD",          {"HDG", "HDM", "HDT"}},
    {"MessageOfSentences",  "decode --msg GGA,TEMP",    {"GGA,TEMPERATURE"}},
    {"SideOfConvert",       "geo convert --from e",     {"ecef"}},
    {"SideOfTime",          "geo time --from m",        {"mjd"}},
    {"TimesAreNoWords",     "decode --from 1 --to ''",   {}},
    {"OneWord",             "extract --split-by ''",     {"protocol"}},
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
    {"FishMeaning", "fish",   "fish -c \"source velagnss.fish; complete -C 'velagnss convert --to gp'\" | cut -f 2", "track, GPX 1.1\n"},
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
