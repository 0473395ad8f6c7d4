#include "apps/manual/ManPage.h"

#include <fmt/core.h>

#include <sstream>
#include <string_view>
#include <utility>

namespace Manual {
namespace {

constexpr std::size_t kWidth = 78;  // of a line of source

struct S_Term {
  std::string_view term;
  std::string_view meaning;
};

constexpr char kSearchAndProto[] =
    "--search says which protocols are looked for at all: bytes of others are skipped and reported as noise, and what "
    "looks like the start of another protocol cannot hide a frame. --proto and --msg of decode only choose which of "
    "the "
    "frames found are shown: damage, counts and times are still those of the whole input. The names are:";

constexpr S_Term kProtocols[] = {
    {"rtcm3", "RTCM 3 frames (0xD3), checked by CRC-24Q"},
    {"nmea", "NMEA 0183 sentences, from $ or ! to *hh"},
    {"bin", "frames of the receiver's binary protocol ($BIN), by block number"},
    {"pkvn", "$PKVN sentences of the receiver: attitude, status, raw data"},
    {"rd", "$RD1 sentences: signal diagnostics"},
    {"jrox", "$JROX frames: packed bytes with a checksum"},
    {"site", "site records, $>JSITERECORD"},
    {"ack", "acknowledgements of commands, $>; without checksum, and only searched for when named, or with --acks"},
    {"ji", "replies $>JI"},
    {"jquery", "replies $>JQUERY"},
    {"geo", "replies $>JGEO"},
};

constexpr S_Term kEnvironment[] = {
    {"NO_COLOR", "if set and not empty, messages are without color"},
    {"TERM", "if it is dumb or not set, there is neither color nor progress"},
    {"COLUMNS", "width of the help in characters, 80 by default"},
};

constexpr S_Term kFiles[] = {
    {"/usr/share/doc/velagnss/docs/json.md", "what decode, stat and geo write as JSON"},
    {"/usr/share/doc/velagnss/docs/velagnss.schema.json", "the same as a JSON Schema"},
    {"/usr/share/doc/velagnss/docs/convert.md", "the formats of convert; encode.md and geo.md are beside it"},
};

constexpr char kSeeAlso[] = ".BR jq (1),\n.BR stty (1),\n.BR gzip (1)\n";

// Text escaped for roff: what users copy to a shell stays unchanged, and no line is taken for a request.
std::string Escape(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\\':
        escaped += "\\e";
        break;
      case '-':
        escaped += "\\-";
        break;
      case '\'':
        escaped += "\\(aq";
        break;
      case '`':
        escaped += "\\(ga";
        break;
      case '^':
        escaped += "\\(ha";
        break;
      case '~':
        escaped += "\\(ti";
        break;
      default:
        escaped += c;
    }
  }
  return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

// Words set in lines.
std::string Fill(const std::string& text) {
  std::istringstream words(text);
  std::string filled;
  std::string line;
  for (std::string word; words >> word;) {
    const std::string escaped = Escape(word);
    if (!line.empty() && line.size() + 1 + escaped.size() > kWidth) filled += std::exchange(line, "") + '\n';
    line += (line.empty() ? "" : " ") + escaped;
  }
  return filled + line + (line.empty() ? "" : "\n");
}

std::string Bold(const std::string& text) { return "\\fB" + Escape(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escape(text) + "\\fR"; }

// Lines of the form "  command     what it does".
std::string Examples(const std::vector<std::string>& lines) {
  std::string page;
  for (const std::string& line : lines) {
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin == std::string::npos) continue;
    const std::size_t gap = line.find("  ", begin);
    page += ".TP\n" + Bold(line.substr(begin, gap - begin)) + '\n';
    page += gap == std::string::npos ? "\n" : Fill(line.substr(gap));
  }
  return page;
}

// Paragraphs, separated by empty lines; one of them may hold examples.
std::string Prose(const std::string& text) {
  constexpr std::string_view kExamples = "Examples:\n";
  std::vector<std::string> paragraphs;
  for (const std::string& paragraph : Split(text, "\n\n")) {
    const bool isExamples = paragraph.starts_with(kExamples);
    paragraphs.push_back(isExamples ? std::string(kExamples) + Examples(Split(paragraph.substr(kExamples.size()), "\n"))
                                    : Fill(paragraph));
  }
  return Join(paragraphs, ".PP\n");
}

// Indented lines stay lines of their own: they are a list.
std::string OptionText(const std::string& description) {
  std::string page;
  bool wasIndented = false;
  for (const std::string& line : Split(description, "\n")) {
    const bool isIndented = line.starts_with(' ');
    if (isIndented || wasIndented) page += ".br\n";
    page += Fill(line);
    wasIndented = isIndented;
  }
  return page;
}

std::string OptionEntry(const S_Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.names) names.push_back(name.starts_with('-') ? Bold(name) : Italic(name));
  const std::string value = option.value.empty() ? "" : ' ' + Italic(option.value);
  return ".TP\n" + Join(names, ", ") + value + '\n' + OptionText(option.description);
}

std::string Usage(const S_Command& command) {
  std::string usage =
      Bold(command.path.empty() ? "velagnss" : "velagnss " + command.path) + " [" + Italic("OPTIONS") + ']';
  for (const S_Option& argument : command.arguments)
    usage += " [" + Italic(argument.names.front()) + argument.value + ']';
  if (!command.commands.empty()) usage += ' ' + Italic("COMMAND");
  return usage + '\n';
}

std::string Entry(std::string_view term, std::string_view meaning) {
  return ".TP\n" + Bold(std::string(term)) + '\n' + Fill(std::string(meaning));
}

std::string CommandSection(const S_Command& command) {
  std::string page =
      ".SS velagnss " + Escape(command.path) + '\n' + Usage(command) + ".PP\n" + Prose(command.description);
  for (const S_Option& argument : command.arguments) page += OptionEntry(argument);
  for (const S_Option& option : command.options) page += OptionEntry(option);
  return page;
}

}  // namespace

std::string ManPage(const std::vector<S_Command>& commands, const std::string& footer, const std::string& date) {
  const S_Command& program = commands.front();
  std::string page = fmt::format(".TH VELAGNSS 1 {} \"velagnss {}\" \"User Commands\"\n", date, VELAGNSS_VERSION);
  page += ".SH NAME\nvelagnss \\-\n" + Fill(Summary(program.description));
  page += ".SH SYNOPSIS\n" + Usage(program);
  page += ".SH DESCRIPTION\n" + Prose(program.description);
  page += ".SH OPTIONS\n";
  for (const S_Option& option : program.options) page += OptionEntry(option);
  page += ".SH COMMANDS\n";
  for (const S_Command& command : commands)
    if (!command.path.empty()) page += CommandSection(command);
  page += ".SH PROTOCOLS\n" + Fill(kSearchAndProto);
  for (const auto& [name, meaning] : kProtocols) page += Entry(name, meaning);
  page += ".SH EXIT STATUS\n" + Examples(Split(footer.substr(footer.find(":\n") + 2), "\n"));
  page += ".SH ENVIRONMENT\n";
  for (const auto& [name, meaning] : kEnvironment) page += Entry(name, meaning);
  page += ".SH FILES\n";
  for (const auto& [name, meaning] : kFiles) page += Entry(name, meaning);
  page += ".SH SEE ALSO\n" + std::string(kSeeAlso);
  return page;
}

}  // namespace Manual
