#include "apps/velagnss/account/StreamReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

constexpr double kGapFactor = 1.5;        // of the usual step
constexpr std::size_t kMaxSteps = 10000;  // different lengths of steps that are told apart
constexpr long kMaxLate = 10000;          // ms that a sentence may be behind others, as in tracks
constexpr std::size_t kMaxStepsKept = 1000;
constexpr std::size_t kShortList = 10;
constexpr double kDegreesPerRadian = 180 / std::numbers::pi;

double Percent(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

template <class... Arguments>
void Line(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
  text += '\n';
}

long Milliseconds(const S_TimeGap& step) { return std::lround((step.to - step.from) * 1000); }

std::string NumberText(double value, int decimals) {
  return std::isfinite(value) ? fmt::format("{:.{}f}", value, decimals) : "-";
}

void AppendRest(std::string& table, std::uint64_t count, std::size_t shown) {
  if (count > shown) Line(table, "  and {} more", count - shown);
}

}  // namespace

void C_EpochSteps::Note(std::uint64_t offset, double seconds) {
  if (std::isnan(seconds)) return;
  if (!m_first) m_first = seconds;
  const S_TimeGap step{offset, m_last.value_or(seconds), seconds};
  const long length = Milliseconds(step);
  if (length < 0 && length >= -kMaxLate) return;
  m_last = seconds;
  if (length <= 0) return;
  Count(length);
  Keep(step);
}

void C_EpochSteps::Count(long step) {
  if (m_counts.size() == kMaxSteps && !m_counts.contains(step)) return;
  const std::uint64_t count = ++m_counts[step];
  const std::uint64_t most = m_usual == 0 ? 0 : m_counts[m_usual];
  if (count > most || (count == most && step < m_usual)) m_usual = step;
}

// What looks like a gap is worth the place of what does not.
void C_EpochSteps::Keep(const S_TimeGap& step) {
  if (m_steps.size() == kMaxStepsKept && IsGap(Milliseconds(step))) m_steps = Gaps();
  if (m_steps.size() < kMaxStepsKept) m_steps.push_back(step);
}

bool C_EpochSteps::IsGap(long step) const {
  return static_cast<double>(step) > kGapFactor * static_cast<double>(m_usual);
}

std::uint64_t C_EpochSteps::GapCount() const {
  std::uint64_t count = 0;
  for (const auto& [step, times] : m_counts) count += IsGap(step) ? times : 0;
  return count;
}

std::vector<S_TimeGap> C_EpochSteps::Gaps() const {
  std::vector<S_TimeGap> gaps = m_steps;
  std::erase_if(gaps, [this](const S_TimeGap& step) { return !IsGap(Milliseconds(step)); });
  return gaps;
}

void C_StreamReport::OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) {
  m_decoder.Decode(frame);
  S_MessageCount& entry = CountOf(frame);
  ++entry.count;
  if (m_decoder.HasDataError()) ++entry.faults;
  m_epochs.Note(offset, m_decoder.Clock().Seconds());
  if (const U_EcdDcdData* const sentence = m_decoder.Sentence())
    m_position.Note(static_cast<C_RawDataMessage::eNMEA0183Messages>(frame.messageType), *sentence);
}

S_MessageCount& C_StreamReport::CountOf(const C_RawDataMessage& frame) {
  const S_MessageKey key{frame.protocol, frame.messageType};
  const auto found =
      std::find_if(m_messages.begin(), m_messages.end(), [&](const S_MessageCount& entry) { return entry.key == key; });
  return found != m_messages.end() ? *found : m_messages.emplace_back(S_MessageCount{key});
}

void C_StreamReport::OnRejection(const S_Rejection& rejection) {
  ++(rejection.result == eRecChecksumError ? m_checksumErrors : m_rejectedStarts);
  m_falseStarts.Add({rejection.offset, rejection.result});
}

void C_StreamReport::OnSkipped(std::uint64_t offset, std::uint64_t length) { m_skipped.Add({offset, length}); }

void C_StreamReport::Close(const C_FrameReader& reader) {
  m_bytes = reader.BytesFed();
  m_queued = reader.QueuedAtEnd();
  m_atEnd = reader.TotalsAtEnd();
  m_framesGood = reader.Totals().framesGood;
  m_framesBad = reader.Totals().framesBad;
  std::sort(m_messages.begin(), m_messages.end(), [](const S_MessageCount& a, const S_MessageCount& b) {
    return std::pair(a.key.protocol, a.key.type) < std::pair(b.key.protocol, b.key.type);
  });
}

double C_StreamReport::BadPercent() const { return Percent(m_framesBad, m_framesGood + m_framesBad); }

// Every epoch stands for one step of time: ten epochs of one second are ten seconds.
double C_StreamReport::Duration() const {
  if (!m_epochs.First()) return 0;
  return *m_epochs.Last() - *m_epochs.First() + m_epochs.UsualStep();
}

double C_StreamReport::RateOf(std::uint64_t count) const {
  return Duration() > 0 ? static_cast<double>(count) / Duration() : std::nan("");
}

void C_StreamReport::WriteJson(C_JsonWriter& json) const {
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("report").String("stat");
  json.Key("input").String(m_input);
  json.Key("bytes").BeginObject();
  json.Key("total").Integer(m_bytes);
  json.Key("accepted").Integer(m_atEnd.bytesAccepted);
  json.Key("discarded").Integer(m_atEnd.bytesDiscarded);
  json.Key("queued").Integer(m_queued);
  json.EndObject();
  json.Key("frames").BeginObject();
  json.Key("good").Integer(m_framesGood);
  json.Key("bad").Integer(m_framesBad);
  json.Key("bad_percent").Number(BadPercent());
  json.Key("recovered_at_end").Integer(m_framesGood - m_atEnd.framesGood);
  json.EndObject();
  WriteJsonMessages(json);
  WriteJsonTime(json);
  WriteJsonPosition(json);
  WriteJsonIntegrity(json);
  json.EndObject();
  json.EndLine();
}

void C_StreamReport::WriteJsonMessages(C_JsonWriter& json) const {
  json.Key("messages").BeginArray();
  for (const S_MessageCount& entry : m_messages) {
    json.BeginObject();
    json.Key("protocol").String(ProtocolName(entry.key.protocol));
    json.Key("message").String(C_MessageName(entry.key.protocol, entry.key.type).Text());
    json.Key("number").IntegerOrNull(MessageNumber(entry.key.type));
    json.Key("count").Integer(entry.count);
    json.Key("faults").Integer(entry.faults);
    json.Key("per_second").Number(RateOf(entry.count));
    json.EndObject();
  }
  json.EndArray();
}

void C_StreamReport::WriteJsonTime(C_JsonWriter& json) const {
  json.Key("time");
  if (!m_epochs.First()) return json.Null();
  const C_StreamClock& clock = m_decoder.Clock();
  json.BeginObject();
  json.Key("first").String(clock.Text(*m_epochs.First()).Text());
  json.Key("last").String(clock.Text(*m_epochs.Last()).Text());
  json.Key("duration_s").Number(Duration());
  json.Key("usual_step_s").Number(m_epochs.UsualStep());
  json.Key("gaps").BeginArray();
  for (const S_TimeGap& gap : m_epochs.Gaps()) {
    json.BeginObject();
    json.Key("offset").Integer(gap.offset);
    json.Key("from").String(clock.Text(gap.from).Text());
    json.Key("to").String(clock.Text(gap.to).Text());
    json.Key("seconds").Number(static_cast<double>(Milliseconds(gap)) / 1000);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

void C_StreamReport::WriteJsonPosition(C_JsonWriter& json) const {
  json.Key("position");
  const std::optional<S_PositionSummary> position = m_position.Summary();
  if (!position) return json.Null();
  json.BeginObject();
  json.Key("fixes").Integer(position->fixes);
  json.Key("latitude_deg").Number(position->latitude * kDegreesPerRadian);
  json.Key("longitude_deg").Number(position->longitude * kDegreesPerRadian);
  json.Key("height_m").Number(position->height);
  json.Key("altitude_m").Number(position->altitude);
  json.Key("spread_north_m").Number(position->spreadNorth);
  json.Key("spread_east_m").Number(position->spreadEast);
  json.Key("spread_up_m").Number(position->spreadUp);
  json.Key("radius_50_m").Number(position->radius50);
  json.Key("radius_95_m").Number(position->radius95);
  json.EndObject();
}

void C_StreamReport::WriteJsonIntegrity(C_JsonWriter& json) const {
  json.Key("integrity").BeginObject();
  json.Key("checksum_errors").Integer(m_checksumErrors);
  json.Key("rejected_starts").Integer(m_rejectedStarts);
  json.Key("skipped_ranges").Integer(m_skipped.Count());
  json.Key("false_starts").BeginArray();
  for (const S_FalseStart& start : m_falseStarts.Entries()) {
    json.BeginObject();
    json.Key("offset").Integer(start.offset);
    json.Key("result").Integer(start.result);
    json.Key("why").String(RejectionText(start.result));
    json.EndObject();
  }
  json.EndArray();
  json.Key("skipped").BeginArray();
  for (const S_SkippedRange& range : m_skipped.Entries()) {
    json.BeginObject();
    json.Key("offset").Integer(range.offset);
    json.Key("length").Integer(range.length);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

std::string C_StreamReport::Table(bool isLong) const {
  const std::size_t maxRows = isLong ? m_skipped.kCapacity : kShortList;
  std::string table;
  Line(table, "{}", Printable(m_input));
  Line(table, "  {:<16}{:>14}", "bytes", m_bytes);
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "accepted", m_atEnd.bytesAccepted, Percent(m_atEnd.bytesAccepted, m_bytes));
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "discarded", m_atEnd.bytesDiscarded,
       Percent(m_atEnd.bytesDiscarded, m_bytes));
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "still queued", m_queued, Percent(m_queued, m_bytes));
  Line(table, "  {:<16}{:>14}", "frames good", m_framesGood);
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "frames damaged", m_framesBad, BadPercent());
  Line(table, "  {:<16}{:>14}", "checksum errors", m_checksumErrors);
  Line(table, "  {:<16}{:>14}", "rejected starts", m_rejectedStarts);
  Line(table, "  {:<16}{:>14}", "skipped ranges", m_skipped.Count());
  AppendMessages(table);
  AppendTime(table, maxRows);
  AppendPosition(table);
  AppendIntegrity(table, maxRows);
  return table;
}

void C_StreamReport::AppendMessages(std::string& table) const {
  if (m_messages.empty()) return;
  Line(table, "\n  {:<10}{:<14}{:>10}{:>12}{:>10}", "protocol", "message", "count", "per second", "faults");
  for (const S_MessageCount& entry : m_messages) {
    const double rate = RateOf(entry.count);
    Line(table, "  {:<10}{:<14}{:>10}{:>12}{:>10}", ProtocolName(entry.key.protocol),
         C_MessageName(entry.key.protocol, entry.key.type).Text(), entry.count,
         std::isnan(rate) ? "-" : fmt::format("{:.3f}", rate), entry.faults);
  }
}

void C_StreamReport::AppendTime(std::string& table, std::size_t maxRows) const {
  if (!m_epochs.First()) return;
  const C_StreamClock& clock = m_decoder.Clock();
  const std::vector<S_TimeGap> gaps = m_epochs.Gaps();
  Line(table, "\n  first time  {}", clock.Text(*m_epochs.First()).Text());
  Line(table, "  last time   {}", clock.Text(*m_epochs.Last()).Text());
  Line(table, "  usual step  {} s, gaps {}", m_epochs.UsualStep(), m_epochs.GapCount());
  const std::size_t shown = std::min(maxRows, gaps.size());
  for (std::size_t i = 0; i < shown; ++i) {
    const S_TimeGap& gap = gaps[i];
    Line(table, "  {:>14}  gap of {:.3f} s after {}", gap.offset, gap.to - gap.from, clock.Text(gap.from).Text());
  }
  AppendRest(table, m_epochs.GapCount(), shown);
}

void C_StreamReport::AppendPosition(std::string& table) const {
  const std::optional<S_PositionSummary> position = m_position.Summary();
  if (!position) return;
  Line(table, "\n  fixes          {}", position->fixes);
  Line(table, "  mean position  {} {} deg", NumberText(position->latitude * kDegreesPerRadian, 9),
       NumberText(position->longitude * kDegreesPerRadian, 9));
  Line(table, "  mean height    {} m above the ellipsoid, {} m above sea level", NumberText(position->height, 4),
       NumberText(position->altitude, 4));
  Line(table, "  spread         {} m north, {} m east, {} m up", NumberText(position->spreadNorth, 4),
       NumberText(position->spreadEast, 4), NumberText(position->spreadUp, 4));
  Line(table, "  within         {} m horizontally 50 % of the fixes, {} m 95 %", NumberText(position->radius50, 4),
       NumberText(position->radius95, 4));
}

void C_StreamReport::AppendIntegrity(std::string& table, std::size_t maxRows) const {
  if (m_skipped.Count() == 0) return;
  Line(table, "\n  {:>14}  {}", "offset", "skipped, and why a frame that began there was none");
  auto start = m_falseStarts.Entries().begin();
  std::size_t shown = 0;
  for (const S_SkippedRange& range : m_skipped.Entries()) {
    if (shown++ == maxRows) break;
    Line(table, "  {:>14}  {} bytes", range.offset, range.length);
    for (; start != m_falseStarts.Entries().end() && start->offset < range.offset + range.length; ++start)
      Line(table, "  {:>14}    {}", start->offset, RejectionText(start->result));
  }
  AppendRest(table, m_skipped.Count(), std::min<std::size_t>(maxRows, m_skipped.Entries().size()));
}

}  // namespace Host
