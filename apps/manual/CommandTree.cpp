#include "apps/manual/CommandTree.h"

#include <CLI/CLI.hpp>
#include <set>

#include "apps/velagnss/commands/ConvertCommand.h"
#include "apps/velagnss/geo/GeoForms.h"
#include "apps/velagnss/json/MoreNmeaJson.h"
#include "apps/velagnss/rinex/RinexOptions.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/MessageNames.h"
#include "binproto/VelaBin_Decode.h"
#include "framing/CRC24.h"
#include "records/ResultCodes.h"
#include "rtcm3/Rtcm3Decoder.h"
#include "stream/Names.h"

namespace Manual {
namespace {

// `geo --from`: a calculation has its own sides, or none.
std::string SidesOf(const std::string& command) { return Host::JoinNames(Host::SidesOfGeo(command), std::identity()); }

// Options whose value is a word, or a list of words, from a set.
struct S_WordRule {
  const char* option;
  std::string (*words)(const std::string& command);
};

// Of a message with a decoder, a payload of nothing but the number is too short.
bool IsDecodedRtcm(unsigned int number) {
  unsigned char frame[] = {0xD3, 0, 2, static_cast<unsigned char>(number >> 4), static_cast<unsigned char>(number << 4),
                           0,    0, 0};
  const unsigned int crc = C_CRC24::ComputeCRC(frame, sizeof frame - 3);
  for (unsigned int i = 0; i < 3; ++i) frame[5 + i] = static_cast<unsigned char>(crc >> (8 * (2 - i)));
  return velagnss::Rtcm3Decoder().Decode(frame, sizeof frame).result == eResultPastEnd;
}

// A block without data is too short for each block that is supported.
bool IsSupportedBlock(unsigned int number) {
  unsigned char frame[] = {'$', 'B', 'I', 'N', static_cast<unsigned char>(number), 0, 0, 0, 0, 0};
  static U_VelaBIN_EcdDcdData record;
  unsigned short found = 0;
  return C_VelaBin_Decode(nullptr).Decode(frame, sizeof frame, found, record) != eResultUnknownMessage;
}

// Every sentence with a name of its own, the supported blocks, and the decoded messages of RTCM 3 by number: thousands
// of numbers would be no help.
std::string MessagesToName() {
  const std::vector<std::string> sentences = Split(Host::SentenceNames() + ' ' + Host::MoreSentenceNames(), " ");
  const std::set<std::string> sorted(sentences.begin(), sentences.end());  // some are in both lists
  std::string names = Join({sorted.begin(), sorted.end()}, " ");
  for (unsigned int number = 0; number < velagnss::NumMessages(C_RawDataMessage::eVelaBIN); ++number)
    if (IsSupportedBlock(number))
      names.append(" ").append(velagnss::MessageName(C_RawDataMessage::eVelaBIN, number).Text());
  for (unsigned int number = 0; number < velagnss::NumMessages(C_RawDataMessage::eRTCM3_x); ++number)
    if (IsDecodedRtcm(number)) names += ' ' + std::to_string(number);
  return names;
}

constexpr S_WordRule kWordRules[] = {
    {"--search", [](const std::string&) { return Host::ProtocolNames(); }},
    {"--proto", [](const std::string&) { return Host::ProtocolNames(); }},
    {"--msg", [](const std::string&) { return MessagesToName(); }},
    {"--to", [](const std::string&) { return Host::FormatNames(); }},
    {"--system", [](const std::string&) { return Host::NavSystemNames(); }},
    {"--from", &SidesOf},
    {"--split-by", [](const std::string&) { return std::string("protocol"); }},
};

std::vector<std::string> WordsOf(const std::string& command, const S_Option& option) {
  if (option.value.find('|') != std::string::npos) return Split(option.value, "|");
  for (const S_WordRule& rule : kWordRules)
    if (option.names.back() == rule.option) return Split(rule.words(command), " ");
  return {};
}

S_Option Describe(const std::string& command, const CLI::Option& option) {
  S_Option described;
  for (const std::string& name : option.get_snames()) described.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) described.names.push_back("--" + name);
  if (!option.nonpositional()) described.names.push_back(option.get_name(true));
  if (option.get_items_expected_max() > 0) described.value = option.get_option_text();
  described.description = option.get_description();
  described.words = WordsOf(command, described);
  if (described.names.back() == "--to")
    for (const std::string& format : described.words) described.meanings.push_back(Host::FormatContents(format));
  return described;
}

void Append(std::vector<S_Command>& commands, const CLI::App& app, const std::string& path) {
  S_Command command{path, app.get_description(), {}, {}, {}};
  for (const CLI::Option* option : app.get_options())
    (option->nonpositional() ? command.options : command.arguments).push_back(Describe(app.get_name(), *option));
  const std::vector<const CLI::App*> below = app.get_subcommands([](const CLI::App*) { return true; });
  for (const CLI::App* child : below) command.commands.push_back(child->get_name());
  commands.push_back(std::move(command));
  for (const CLI::App* child : below)
    Append(commands, *child, path.empty() ? child->get_name() : path + ' ' + child->get_name());
}

}  // namespace

std::vector<S_Command> ListCommands(const CLI::App& app) {
  std::vector<S_Command> commands;
  Append(commands, app, "");
  return commands;
}

std::string Summary(const std::string& description) {
  std::string summary = description.substr(0, description.find_first_of("\n;:"));
  for (const std::string end : {".", ",", ", of"})
    if (summary.size() > end.size() && summary.ends_with(end)) summary.resize(summary.size() - end.size());
  return summary;
}

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> pieces;
  if (text.empty()) return pieces;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + separator.size())
    pieces.push_back(text.substr(begin, end - begin));
  pieces.push_back(text.substr(begin));
  return pieces;
}

std::string Join(const std::vector<std::string>& pieces, const std::string& separator) {
  std::string text;
  for (const std::string& piece : pieces) text += (text.empty() ? "" : separator) + piece;
  return text;
}

}  // namespace Manual
