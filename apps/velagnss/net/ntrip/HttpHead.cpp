#include "apps/velagnss/net/ntrip/HttpHead.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using eKind = S_HttpHead::eKind;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsNameCharacter(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '-'; }
bool IsControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; }
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

bool HasControl(std::string_view text) { return std::any_of(text.begin(), text.end(), &IsControl); }

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// The code of an answer has three digits; anything else is none.
unsigned int CodeOf(std::string_view word) {
  unsigned int code = 0;
  return word.size() == 3 && ParseWhole(word, code) ? code : 0;
}

bool IsHttpVersion(std::string_view word) { return InLowerCase(word).starts_with("http/"); }

// The words that first lines begin with, and whether a code follows.
struct S_FirstWord {
  std::string_view word;  // in lower case
  eKind kind;
  bool hasCode;
};
constexpr S_FirstWord kFirstWords[] = {
    {"icy", eKind::Icy, true},
    {"sourcetable", eKind::Table, true},
    {"error", eKind::Error, false},
    {"source", eKind::Source, false},
};

// None: not the first line of a head.
std::optional<eKind> KindOf(const std::vector<std::string_view>& words, unsigned int code) {
  if (words.empty()) return std::nullopt;
  const std::string first = InLowerCase(words[0]);
  if (IsHttpVersion(first)) return code != 0 ? std::optional(eKind::Http) : std::nullopt;
  if (first == "ok" && words.size() == 1) return eKind::Icy;
  for (const S_FirstWord& row : kFirstWords)
    if (first == row.word && words.size() > 1 && (!row.hasCode || code != 0)) return row.kind;
  const bool isRequest = words.size() == 3 ? IsHttpVersion(words[2]) : words.size() == 2 && first == "get";
  return isRequest ? std::optional(eKind::Request) : std::nullopt;
}

// Where a version 1 stream may begin instead of a field: a field has a name of letters, digits and '-' up to a ':'.
enum class eLooseLine { Field, End, Stream, Undecided };
eLooseLine LooseLine(std::string_view rest) {
  constexpr std::size_t kMaxName = 40;
  if (rest.starts_with('\n') || (rest.size() > 1 && rest[0] == '\r')) return eLooseLine::End;
  if (rest.empty() || rest == "\r") return eLooseLine::Undecided;
  if (!IsLetter(rest[0])) return eLooseLine::Stream;
  const std::string_view front = rest.substr(0, kMaxName);
  const auto* const end = std::find_if_not(front.begin(), front.end(), &IsNameCharacter);
  if (end == front.end()) return front.size() == kMaxName ? eLooseLine::Stream : eLooseLine::Undecided;
  return *end == ':' ? eLooseLine::Field : eLooseLine::Stream;
}

// What speaks when the first byte is not one of a head.
std::string Suspicion(unsigned char first) {
  constexpr unsigned char kTlsAlert = 0x15;  // record types of RFC 8446
  constexpr unsigned char kTlsHandshake = 0x16;
  constexpr unsigned char kRtcm3 = 0xD3;
  if (first == kTlsAlert || first == kTlsHandshake) return "the other side speaks TLS: use ntrips://";
  if (first == kRtcm3 || first == '$') return "data without an answer, not a caster: perhaps tcp://";
  return "not a caster: it answers in binary";
}

}  // namespace

std::string InLowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::vector<std::string_view> WordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  for (line = Trimmed(line); !line.empty(); line = Trimmed(line)) {
    const auto* const end = std::find_if(line.begin(), line.end(), &IsBlank);
    words.push_back(line.substr(0, static_cast<std::size_t>(end - line.begin())));
    line.remove_prefix(words.back().size());
  }
  return words;
}

std::string_view S_HttpHead::Field(std::string_view name) const {
  const auto found =
      std::find_if(fields.begin(), fields.end(), [name](const auto& field) { return field.first == name; });
  return found == fields.end() ? std::string_view() : found->second;
}

// Chunked must be the last of several codings (RFC 9112, 6.1).
bool S_HttpHead::IsChunked() const { return InLowerCase(Field("transfer-encoding")).ends_with("chunked"); }

C_HeadParser::eState C_HeadParser::Take(std::span<const unsigned char> bytes) {
  m_text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  while (m_state == eState::Incomplete && Step()) continue;
  return m_state;
}

// False: it waits for more, or the head has ended.
bool C_HeadParser::Step() {
  if (m_text.empty()) return false;
  if (m_at == 0 && !TakeFirstByte()) return false;
  if (m_isLoose && EndsLoosely()) return false;
  return TakeLine();
}

// What cannot become a head is known at once: there may never be an end of the line.
bool C_HeadParser::TakeFirstByte() {
  const char first = m_text[0];
  if (first == '<') {
    m_head.kind = eKind::Page;
    EndHere();
    return false;
  }
  const bool isText = static_cast<unsigned char>(first) < 0x80 && !HasControl({&first, 1}) && first != '$';
  return isText || Refuse(Suspicion(static_cast<unsigned char>(first)));
}

// Whether the head has ended without a line, or it cannot be said yet.
bool C_HeadParser::EndsLoosely() {
  const std::string_view rest = Body();
  const std::string_view line = rest.substr(0, rest.find('\n'));
  switch (LooseLine(rest)) {
    case eLooseLine::Undecided:
      return true;
    case eLooseLine::End:
      m_at += rest.starts_with("\r\n") ? 2 : 1;
      EndHere();
      return true;
    case eLooseLine::Field:
      if (!HasControl(line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0)))) return false;
      [[fallthrough]];  // binary with a ':' in it
    case eLooseLine::Stream:
      EndHere();
  }
  return true;
}

bool C_HeadParser::TakeLine() {
  std::string_view line = Body();
  const std::size_t end = line.find('\n');
  line = line.substr(0, end);
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.size() > kMaxHeadLine) return Refuse("a line of its answer is longer than 8 KiB");
  if (HasControl(line)) return Refuse("not a caster: its answer has control characters in it");
  if (end == std::string_view::npos) return false;
  m_at += end + 1;
  if (m_at > kMaxHead) return Refuse("the head of its answer is longer than 16 KiB");
  if (++m_lines > kMaxHeadLines) return Refuse("the head of its answer has more than 100 lines");
  m_hasFirstLine ? TakeField(line) : TakeFirstLine(line);
  return m_state == eState::Incomplete;
}

void C_HeadParser::TakeFirstLine(std::string_view line) {
  constexpr std::size_t kShown = 60;
  const std::vector<std::string_view> words = WordsOf(line);
  const unsigned int code = words.size() > 1 ? CodeOf(words[1]) : 0;
  const std::optional<eKind> kind = KindOf(words, code);
  if (!kind) {
    Refuse(fmt::format("not a caster: it answers '{}'", Printable(line.substr(0, kShown))));
    return;
  }
  m_hasFirstLine = true;
  m_isLoose = *kind == eKind::Icy || *kind == eKind::Table || *kind == eKind::Source;
  m_head.kind = *kind;
  m_head.firstLine = line;
  m_head.code = *kind == eKind::Icy && words.size() == 1 ? 200 : code;
  m_head.isHttp10 =
      *kind == eKind::Request ? words.size() < 3 || words[2].ends_with("/1.0") : words[0].ends_with("/1.0");
  if (*kind == eKind::Error) EndHere();
}

// Lines without a ':' mean nothing; neither do continuation lines, which have long been obsolete.
void C_HeadParser::TakeField(std::string_view line) {
  if (line.empty() && m_head.code / 100 == 1) {
    m_head = {};
    m_hasFirstLine = false;
    return;
  }
  if (line.empty()) return EndHere();
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  m_head.fields.emplace_back(InLowerCase(Trimmed(line.substr(0, colon))), Trimmed(line.substr(colon + 1)));
}

bool C_HeadParser::Refuse(std::string error) {
  m_state = eState::Bad;
  m_error = std::move(error);
  return false;
}

}  // namespace Host
