#include "apps/velagnss/rinex/NavConverter.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <set>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/rinex/NavRecord.h"
#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr int kMaxNumber = 99;  // of a satellite: two digits

void AppendRecord(std::string& text, const S_NavRecord& record) {
  const S_NavSystem& system = NavSystems()[record.system];
  text += fmt::format("{}{:02} {}", system.letter, record.satellite, EpochText(record.epoch));
  for (std::size_t i = 0; i < record.values.size(); ++i) {
    if (i % kFieldsPerLine == kFieldsBesideEpoch) {
      EndRinexLine(text);
      text += "    ";
    }
    AppendRinexNumber(text, i == system.transmission ? record.transmission : record.values[i]);
  }
  EndRinexLine(text);
}

// Whether a GLONASS satellite sends no four-year interval or no day in it: both count from 1 (GLONASS ICD, table 4.5).
bool LacksDate(const velagnss::Record& ephemeris) {
  constexpr unsigned int kDaysInFourYears = 1461;
  const auto* const record = std::get_if<S_IFPvaEphRec>(&ephemeris);
  if (record == nullptr || record->System != ALGO::GNSS_GLONASS) return false;
  return record->N4 == 0 || record->Nt == 0 || record->Nt > kDaysInFourYears;
}

bool IsInCalendar(double epoch) {
  constexpr unsigned int kDays = kLastMjd + 1 - kMjdOfGpsEpoch;
  return epoch >= 0 && epoch < kDays * kSecondsPerDay;
}

class C_NavConverter : public C_TextConsumer {
 public:
  explicit C_NavConverter(const S_RinexNavOptions& options)
      : m_options(options), m_isSelected(SelectNavSystems(options.systems)) {}

  void BeginInput(const std::string& name) override { m_input = name; }
  void OnFrame(const S_FrameRecord& record) override;
  void EndInput(const S_InputEnd& end) override;
  void Finish() override;
  eExitCode Judge() const override { return m_records.empty() || !m_leftOut.empty() ? eExitData : eExitOk; }

 private:
  void LeaveOut(const velagnss::Frame& frame, const std::string& reason);
  std::string RunDate() const;
  std::string_view Title() const;
  void AppendHeader();

  S_RinexNavOptions m_options;
  std::array<bool, kNumNavSystems> m_isSelected;
  std::string m_input;
  std::set<S_NavRecord> m_records;                // of equal ones the first
  std::map<std::string, unsigned int> m_leftOut;  // ephemerides, by the reason
  std::string m_lastDate;                         // of the inputs' sentences, ISO 8601
};

// Why an ephemeris cannot be written; empty when it can.
std::string Objection(const velagnss::DecodedFrame& decoded) {
  const unsigned int result = decoded.result.value_or(eResultOk);
  if (decoded.isWeekUnresolved)
    return fmt::format("week unknown (result {}); give the time of the recording with --seed WEEK:SECONDS", result);
  if (result != eResultOk) return fmt::format("{} (result {})", velagnss::ResultText(result), result);
  if (LacksDate(decoded.record)) return "the satellite sends no date";
  return {};
}

void C_NavConverter::OnFrame(const S_FrameRecord& record) {
  const std::size_t system = NavSystemOf(record.frame);
  if (system == kNumNavSystems || !m_isSelected[system]) return;
  if (const std::string reason = Objection(record.decoded); !reason.empty()) return LeaveOut(record.frame, reason);
  S_NavRecord nav = NavSystems()[system].recordOf(system, record.decoded.record);
  if (!IsInCalendar(nav.epoch)) return LeaveOut(record.frame, "its date is not within 1980 to 2100");
  const int prn = std::exchange(nav.satellite, nav.satellite - NavSystems()[system].satelliteOffset);
  if (nav.satellite < 1 || nav.satellite > kMaxNumber)
    return LeaveOut(record.frame, fmt::format("RINEX has no number for {} {}", NavSystems()[system].name, prn));
  m_records.insert(std::move(nav));
}

void C_NavConverter::LeaveOut(const velagnss::Frame& frame, const std::string& reason) {
  const velagnss::MessageName message(frame.protocol, frame.message);
  ReportDetail(fmt::format("{}: {} at {} left out: {}", m_input, message.Text(), frame.offset, reason));
  ++m_leftOut[reason];
}

// ISO 8601 dates sort like their times. Without a date the text is only a time of day.
void C_NavConverter::EndInput(const S_InputEnd& end) {
  const C_TimeText time = C_TimeText::StreamTime(end.clock, end.clock.Seconds());
  if (time.Text().ends_with('Z')) m_lastDate = std::max(m_lastDate, std::string(time.Text()));
}

void C_NavConverter::Finish() {
  for (const auto& [reason, count] : m_leftOut) ReportError(fmt::format("ephemerides left out: {}; {}", count, reason));
  if (m_records.empty()) return ReportWarning("no ephemeris to write");
  AppendHeader();
  for (const S_NavRecord& record : m_records) AppendRecord(m_text, record);
}

// "20240518 220000 UTC".
std::string C_NavConverter::RunDate() const {
  if (m_options.runDate == "now") return fmt::format("{:%Y%m%d %H%M%S} UTC", fmt::gmtime(std::time(nullptr)));
  std::string date = m_lastDate.empty() ? EpochText(m_records.rbegin()->epoch) : m_lastDate;
  std::erase_if(date, [](char c) { return c < '0' || c > '9'; });
  return fmt::format("{} {} UTC", date.substr(0, 8), date.substr(8, 6));
}

std::string_view C_NavConverter::Title() const {
  const std::size_t first = m_records.begin()->system;
  const bool isMixed = std::any_of(m_records.begin(), m_records.end(),
                                   [first](const S_NavRecord& record) { return record.system != first; });
  return isMixed ? "M: Mixed" : NavSystems()[first].title;
}

void C_NavConverter::AppendHeader() {
  AppendHeaderLine(m_text, fmt::format("{:9.2f}{:11}{:<20}{}", 3.05, "", "N: GNSS NAV DATA", Title()),
                   "RINEX VERSION / TYPE");
  AppendHeaderLine(m_text, fmt::format("{:<20}{:<20}{}", "velagnss " VELAGNSS_VERSION, m_options.runBy, RunDate()),
                   "PGM / RUN BY / DATE");
  if (!m_options.marker.empty())
    AppendHeaderLine(m_text, fmt::format("{}{}", kMarkerComment, m_options.marker), "COMMENT");
  if (!m_options.agency.empty())
    AppendHeaderLine(m_text, fmt::format("{}{}", kAgencyComment, m_options.agency), "COMMENT");
  AppendHeaderLine(m_text, "", "END OF HEADER");
}

}  // namespace

std::unique_ptr<C_TextConsumer> MakeNavConverter(const S_RinexNavOptions& options) {
  return std::make_unique<C_NavConverter>(options);
}

}  // namespace Host
