#include "apps/velagnss/rinex/NavConverter.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/rinex/NavRecord.h"
#include "apps/velagnss/rinex/NavStore.h"
#include "apps/velagnss/rinex/RinexHeader.h"
#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/Units.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr int kMaxNumber = 99;  // of a satellite: two digits

void EndRecordLine(const S_NavSystem& system, std::string& text, std::size_t start) {
  if (system.fillsLines) text.resize(start + kNavLineWidth, ' ');
  if (system.fillsLines) return text.push_back('\n');
  EndRinexLine(text);
}

void AppendRecord(std::string& text, const S_NavRecord& record) {
  const S_NavSystem& system = NavSystems()[record.system];
  std::size_t start = text.size();
  text += fmt::format("{}{:02} {}", system.letter, record.satellite, EpochText(record.epoch));
  for (std::size_t i = 0; i < system.numValues; ++i) {
    if (i % kFieldsPerLine == kFieldsBesideEpoch) {
      EndRecordLine(system, text, start);
      start = text.size();
      text += "    ";
    }
    AppendRinexNumber(text, PrintedValue(record, i));
  }
  EndRecordLine(system, text, start);
}

// The line that RINEX 4 has before a record.
void AppendRecordHead(std::string& text, const S_NavRecord& record) {
  text +=
      fmt::format("> EPH {}{:02} {}\n", NavSystems()[record.system].letter, record.satellite, NavMessageName(record));
}

// Whether a GLONASS satellite sends no four-year interval or no day in it: both count from 1 (GLONASS ICD, table 4.5).
bool LacksDate(const velagnss::Record& ephemeris) {
  constexpr unsigned int kDaysInFourYears = 1461;
  const auto* const record = std::get_if<S_IFPvaEphRec>(&ephemeris);
  if (record == nullptr || record->System != ALGO::GNSS_GLONASS) return false;
  return record->N4 == 0 || record->Nt == 0 || record->Nt > kDaysInFourYears;
}

class C_NavConverter : public C_TextConsumer {
 public:
  explicit C_NavConverter(const S_RinexOptions& options)
      : m_options(options), m_isSelected(SelectNavSystems(options.systems)) {}

  void BeginInput(const std::string& name) override { m_input = name; }
  void OnFrame(const S_FrameRecord& record) override;
  void EndInput(const S_InputEnd& end) override { m_facts.EndInput(end); }
  void Finish() override;
  eExitCode Judge() const override { return m_isEmpty || !m_leftOut.IsEmpty() ? eExitData : eExitOk; }

 private:
  void LeaveOut(const velagnss::Frame& frame, const std::string& reason);
  std::string_view Title() const;
  void AppendHeader();

  S_RinexOptions m_options;
  std::array<bool, kNumNavSystems> m_isSelected;
  std::string m_input;
  C_NavStore m_records;
  bool m_isEmpty = true;
  std::array<bool, kNumNavSystems> m_isWritten{};
  double m_lastEpoch = 0;
  C_LeftOut m_leftOut;
  C_StreamFacts m_facts;
};

// Why an ephemeris cannot be written; empty when it can.
std::string Objection(const velagnss::DecodedFrame& decoded) {
  const unsigned int result = decoded.result.value_or(eResultOk);
  if (decoded.isWeekUnresolved)
    return fmt::format("week unknown (result {}); give the date of the recording with --date", result);
  if (result != eResultOk) return fmt::format("{} (result {})", velagnss::ResultText(result), result);
  if (LacksDate(decoded.record)) return "the satellite sends no date";
  return {};
}

void C_NavConverter::OnFrame(const S_FrameRecord& record) {
  m_facts.Note(record.decoded.record);
  const std::size_t system = NavSystemOf(record.frame);
  if (system == kNumNavSystems || !m_isSelected[system]) return;
  if (const std::string reason = Objection(record.decoded); !reason.empty()) return LeaveOut(record.frame, reason);
  const S_NavRecord nav = NavRecordOf(system, record.decoded.record);
  if (!IsInCalendar(nav.epoch)) return LeaveOut(record.frame, std::string(kNotInCalendar));
  if (nav.satellite < 1 || nav.satellite > kMaxNumber) {
    const S_NavSystem& row = NavSystems()[system];
    return LeaveOut(record.frame,
                    fmt::format("RINEX has no number for {} {}", row.name, nav.satellite + row.satelliteOffset));
  }
  m_records.Insert(nav);
  m_isWritten[system] = true;
  m_lastEpoch = std::max(m_lastEpoch, nav.epoch);
}

void C_NavConverter::LeaveOut(const velagnss::Frame& frame, const std::string& reason) {
  const velagnss::MessageName message(frame.protocol, frame.message);
  m_leftOut.Add(fmt::format("{}: {} at {}", m_input, message.Text(), frame.offset), reason);
}

void C_NavConverter::Finish() {
  m_leftOut.Report("ephemerides");
  if (m_records.IsEmpty()) return ReportWarning("no ephemeris to write");
  m_isEmpty = false;
  AppendHeader();
  m_records.MoveTo([this](const S_NavRecord& record) {
    if (m_options.version != kRinex3) AppendRecordHead(m_text, record);
    AppendRecord(m_text, record);
    Drain();
  });
}

std::string_view C_NavConverter::Title() const {
  const auto* const first = std::find(m_isWritten.begin(), m_isWritten.end(), true);
  const bool isMixed = std::find(first + 1, m_isWritten.end(), true) != m_isWritten.end();
  return isMixed ? "M: Mixed" : NavSystems()[static_cast<std::size_t>(first - m_isWritten.begin())].title;
}

void C_NavConverter::AppendHeader() {
  const double version = m_options.version == kRinex3 ? 3.05 : 4;
  AppendFirstLines(m_text, {version, "N: GNSS NAV DATA", Title()}, m_options, m_facts.RunDate(m_options, m_lastEpoch));
  if (!m_options.marker.empty())
    AppendHeaderLine(m_text, fmt::format("{}{}", kMarkerComment, m_options.marker), "COMMENT");
  if (!m_options.agency.empty())
    AppendHeaderLine(m_text, fmt::format("{}{}", kAgencyComment, m_options.agency), "COMMENT");
  AppendLeapSeconds(m_text, m_facts.LeapSeconds(m_lastEpoch));
  AppendHeaderLine(m_text, "", "END OF HEADER");
}

}  // namespace

std::unique_ptr<C_TextConsumer> MakeNavConverter(const S_RinexOptions& options) {
  return std::make_unique<C_NavConverter>(options);
}

}  // namespace Host
