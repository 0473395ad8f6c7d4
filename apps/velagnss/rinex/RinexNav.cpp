#include "apps/velagnss/rinex/RinexNav.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/text/MessageNames.h"
#include "geo/GnssTables.h"
#include "geo/NotAvailable.h"
#include "records/ResultCodes.h"

namespace Host {
namespace {

using namespace VelaBIN_Messages;
using K = S_IFKeplerEphRec;
using P = S_IFPvaEphRec;

constexpr double kSecondsPerDay = 86400;
constexpr double kSecondsPerWeek = 604800;
constexpr double kMoscowOffset = 3 * 3600;  // s: GLONASS time is UTC(SU) + 3 h (GLONASS ICD, 3.3.3)

// --- Records as the numbers of the file ---

// A time on a scale without weeks: seconds since 6 January 1980, 0 h, in the time system of the ephemeris.
double Seconds(unsigned short week, double secOfWeek) { return week * kSecondsPerWeek + secOfWeek; }

double WeekStart(double seconds) { return std::floor(seconds / kSecondsPerWeek) * kSecondsPerWeek; }

// One number of a record; nothing leaves its place blank, which says that it is not known.
template <class Record>
using t_Field = std::optional<double> (*)(const Record& record);

template <auto Member, class Record>
std::optional<double> Number(const Record& record) {
  return static_cast<double>(record.*Member);
}

template <auto Member, class Record>
std::optional<double> Negative(const Record& record) {
  return -(record.*Member);
}

template <auto Member, class Record>
std::optional<double> Kilo(const Record& record) {
  return record.*Member / 1000;
}

// IS-GPS-200, 20.3.3.3.1.3: the nominal values of the indices 1, 3 and 5 are rounded to 2.8, 5.7 and 11.3 m. RINEX
// wants 32767 where there is no prediction.
double AccuracyOf(double metres) {
  constexpr double kNoPrediction = 32767;
  return metres > kNoPrediction ? kNoPrediction : std::round(metres * 10) / 10;
}

std::optional<double> KeplerAccuracy(const K& record) { return AccuracyOf(record.Ura); }

// IS-QZSS-PNT: the lowest value of the field says that there is none.
std::optional<double> GroupDelay(const K& record) {
  constexpr double kNotAvailable = -128 * 0x1p-31;
  if (record.System == ALGO::GNSS_QZSS && record.Tgd == kNotAvailable) return std::nullopt;
  return record.Tgd;
}

std::optional<double> Channel(const P& record) {
  if (record.FreqChannel == NA_CHANNEL) return std::nullopt;
  return record.FreqChannel;
}

// Bits 8-7 M, 6 P4, 5 P3, 4 P2, 3-2 P1, 1-0 P.
std::optional<double> StatusFlags(const P& record) {
  return record.M << 7 | record.P4 << 6 | record.P3 << 5 | record.P2 << 4 | record.P1 << 2 | record.P;
}

// Bit 2 is ln of string 3; bits 1 and 0 are about the almanac's health, which the message does not carry.
std::optional<double> HealthFlags(const P& record) { return record.Ln << 2; }

// The message carries an index like that of GPS (RTCA DO-229, message type 9).
constexpr unsigned char kNoSbasAccuracy = 15;
unsigned char SbasAccuracyIndex(const P& record) {
  return static_cast<unsigned char>(std::min<unsigned int>(record.Ft, kNoSbasAccuracy));
}
std::optional<double> SbasAccuracy(const P& record) {
  return AccuracyOf(ALGO::UraIndexToMetres(SbasAccuracyIndex(record)));
}

// Bits 3 to 0 are the health of message type 17 and all set without one, which bit 4 says; bit 5: no accuracy.
std::optional<double> SbasHealth(const P& record) {
  return 0b01'1111 | (SbasAccuracyIndex(record) == kNoSbasAccuracy ? 0b10'0000 : 0);
}

// The place of the transmission time, which is kept beside the contents: repetitions differ in nothing else.
template <class Record>
std::optional<double> Sent(const Record&) {
  return std::nullopt;
}

// The numbers in the order of RINEX 3.05, appendix A: three behind the epoch, then lines of four.
// clang-format off
constexpr t_Field<K> kKeplerFields[] = {  // tables "GPS/QZSS navigation message record"
    &Number<&K::Af0>,     &Number<&K::Af1>,       &Number<&K::Af2>,
    &Number<&K::Iode>,    &Number<&K::Crs>,       &Number<&K::DeltaN>,   &Number<&K::M0>,
    &Number<&K::Cuc>,     &Number<&K::Ecc>,       &Number<&K::Cus>,      &Number<&K::SqrtA>,
    &Number<&K::Toe>,     &Number<&K::Cic>,       &Number<&K::Omega0>,   &Number<&K::Cis>,
    &Number<&K::I0>,      &Number<&K::Crc>,       &Number<&K::Omega>,    &Number<&K::OmegaDot>,
    &Number<&K::IDot>,    &Number<&K::CodeOnL2>,  &Number<&K::ToeWeek>,  &Number<&K::L2PDataFlag>,
    &KeplerAccuracy,      &Number<&K::SvHealth>,  &GroupDelay,           &Number<&K::Iodc>,
    &Sent<K>,             &Number<&K::FitInterval>,  // GPS: hours, QZSS: the flag
};
constexpr t_Field<P> kGlonassFields[] = {
    &Negative<&P::TauN>,  &Number<&P::GammaN>,    &Sent<P>,
    &Kilo<&P::PosX>,      &Kilo<&P::VelX>,        &Kilo<&P::AccX>,       &Number<&P::Health>,
    &Kilo<&P::PosY>,      &Kilo<&P::VelY>,        &Kilo<&P::AccY>,       &Channel,
    &Kilo<&P::PosZ>,      &Kilo<&P::VelZ>,        &Kilo<&P::AccZ>,       &Number<&P::En>,
    &StatusFlags,         &Number<&P::DeltaTauN>, &Number<&P::Ft>,       &HealthFlags,
};
constexpr t_Field<P> kSbasFields[] = {
    &Number<&P::TauN>,    &Number<&P::GammaN>,    &Sent<P>,
    &Kilo<&P::PosX>,      &Kilo<&P::VelX>,        &Kilo<&P::AccX>,       &SbasHealth,
    &Kilo<&P::PosY>,      &Kilo<&P::VelY>,        &Kilo<&P::AccY>,       &SbasAccuracy,
    &Kilo<&P::PosZ>,      &Kilo<&P::VelZ>,        &Kilo<&P::AccZ>,       &Number<&P::Iod>,
};
// clang-format on
constexpr std::size_t kFieldsBesideEpoch = 3;
constexpr std::size_t kFieldsPerLine = 4;
constexpr std::size_t kKeplerSent = kFieldsBesideEpoch + 6 * kFieldsPerLine;  // the first one of the seventh line
constexpr std::size_t kPvaSent = 2;                                           // the third one behind the epoch

// One ephemeris, with its order in the file and what tells it from another one.
struct S_NavRecord {
  double epoch;        // s since 6 January 1980, in the time scale of the file
  std::size_t system;  // row of kSystems
  int satellite;       // its number in RINEX
  std::vector<std::optional<double>> values;
  double transmission;  // as it is printed

  friend bool operator<(const S_NavRecord& a, const S_NavRecord& b) {
    return std::tie(a.epoch, a.system, a.satellite, a.values) < std::tie(b.epoch, b.system, b.satellite, b.values);
  }
};

template <class Record, std::size_t N>
std::vector<std::optional<double>> ValuesOf(const Record& record, const t_Field<Record> (&fields)[N]) {
  std::vector<std::optional<double>> values(N);
  for (std::size_t i = 0; i < N; ++i) values[i] = fields[i](record);
  return values;
}

// The transmission time counts in the week that the record names, and may be below 0 or beyond its end.
S_NavRecord KeplerRecord(std::size_t system, const C_FrameDecoder& decoder) {
  const K& record = *decoder.KeplerEphemeris();
  const double epoch = Seconds(record.TocWeek, record.Toc);
  const double transmission = Seconds(record.TxWeek, record.TxTime) - Seconds(record.ToeWeek, 0);
  return {epoch, system, record.SvId, ValuesOf(record, kKeplerFields), transmission};
}

// Of the frame's time only the time of day is broadcast. Its day is the one nearest to the reference time, also around
// midnight in Moscow, where `FrameTime` may lie a day or two off.
S_NavRecord GlonassRecord(std::size_t system, const C_FrameDecoder& decoder) {
  const P& record = *decoder.PvaEphemeris();
  const double epoch = Seconds(record.RefWeek, record.RefTime) - kMoscowOffset;
  const double frame = epoch + std::remainder(record.FrameTime - record.RefTime, kSecondsPerDay);
  return {epoch, system, record.SvId, ValuesOf(record, kGlonassFields), frame - WeekStart(frame)};
}

S_NavRecord SbasRecord(std::size_t system, const C_FrameDecoder& decoder) {
  const P& record = *decoder.PvaEphemeris();
  const double epoch = Seconds(record.RefWeek, record.RefTime);
  const double transmission = Seconds(record.FrameWeek, record.FrameTime) - WeekStart(epoch);
  return {epoch, system, record.SvId, ValuesOf(record, kSbasFields), transmission};
}

struct S_NavSystem {
  std::string_view name;  // for --system
  char letter;
  std::string_view title;    // in the header
  unsigned int message;      // of the binary protocol
  int satelliteOffset;       // PRN of the satellite that would have the number 0
  std::size_t transmission;  // index of the transmission time
  S_NavRecord (*recordOf)(std::size_t system, const C_FrameDecoder& decoder);  // with the PRN as its satellite
};

// In the order of the file where epochs are equal.
// clang-format off
constexpr S_NavSystem kSystems[] = {
    {"gps",      'G',  "G: GPS",           eBin95,    0,  kKeplerSent,  &KeplerRecord},
    {"glonass",  'R',  "R: GLONASS",       eBin65,    0,  kPvaSent,     &GlonassRecord},
    {"qzss",     'J',  "J: QZSS",          eBin25,  192,  kKeplerSent,  &KeplerRecord},
    {"sbas",     'S',  "S: SBAS Payload",  eBin93,  100,  kPvaSent,     &SbasRecord},
};
// clang-format on
constexpr std::size_t kNumSystems = std::size(kSystems);
constexpr int kMaxNumber = 99;  // two digits

// The row with `value` in a column; `kNumSystems` when there is none.
template <class Value>
std::size_t FindSystem(Value S_NavSystem::*column, const Value& value) {
  std::size_t row = 0;
  while (row < kNumSystems && kSystems[row].*column != value) ++row;
  return row;
}

std::size_t SystemNamed(std::string_view name) { return FindSystem(&S_NavSystem::name, name); }

std::size_t SystemOf(const C_RawDataMessage& frame) {
  if (frame.protocol != C_RawDataMessage::eVelaBIN) return kNumSystems;
  return FindSystem(&S_NavSystem::message, frame.messageType);
}

// --- Text ---

// D19.12 of Fortran with the first digit in front of the point; a zero has no sign.
void AppendNumber(std::string& text, const std::optional<double>& value) {
  constexpr std::size_t kWidth = 19;
  const std::size_t start = text.size();
  if (!value) return text.resize(start + kWidth, ' ');
  text += fmt::format("{:{}.12E}", *value + 0.0, kWidth);
  text[text.find('E', start)] = 'D';
}

void EndLine(std::string& text) {
  text.erase(text.find_last_not_of(' ') + 1);
  text += '\n';
}

// "2024 05 18 22 00 00".
std::string EpochText(double epoch) {
  const auto week = static_cast<unsigned short>(static_cast<unsigned int>(epoch / kSecondsPerWeek));
  std::string text(C_TimeText::WeekTime(week, epoch - WeekStart(epoch), ALGO::GNSS_GPS).Text());
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; }, ' ');
  return text;
}

void AppendRecord(std::string& text, const S_NavRecord& record) {
  const S_NavSystem& system = kSystems[record.system];
  text += fmt::format("{}{:02} {}", system.letter, record.satellite, EpochText(record.epoch));
  for (std::size_t i = 0; i < record.values.size(); ++i) {
    if (i % kFieldsPerLine == kFieldsBesideEpoch) {
      EndLine(text);
      text += "    ";
    }
    AppendNumber(text, i == system.transmission ? record.transmission : record.values[i]);
  }
  EndLine(text);
}

void AppendHeaderLine(std::string& text, std::string_view content, std::string_view label) {
  text += fmt::format("{:<60}{:<20}\n", content, label);
}

// --- Options ---

constexpr std::string_view kMarkerComment = "MARKER NAME: ";
constexpr std::string_view kAgencyComment = "AGENCY: ";
constexpr std::size_t kHeaderWidth = 60;
constexpr std::size_t kRunByWidth = 20;

// A check for an option's text: fits its place in the header.
auto HeaderText(std::size_t width) {
  return [width](const std::string& text) -> std::string {
    const bool isPrintable = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isPrintable && text.size() <= width ? "" : fmt::format("at most {} printable ASCII characters", width);
  };
}

}  // namespace

std::string SystemNames() {
  std::string names;
  for (const S_NavSystem& system : kSystems) names += (names.empty() ? "" : " ") + std::string(system.name);
  return names;
}

namespace {

std::string CheckSystems(const std::string& list) {
  for (const std::string_view item : SplitList(list))
    if (SystemNamed(item) == kNumSystems)
      return fmt::format("there is no system '{}'; known are: {}", item, SystemNames());
  return {};
}

std::array<bool, kNumSystems> SelectSystems(const std::vector<std::string>& lists) {
  std::array<bool, kNumSystems> selected{};
  if (lists.empty()) selected.fill(true);
  for (const std::string& list : lists)
    for (const std::string_view item : SplitList(list)) selected[SystemNamed(item)] = true;
  return selected;
}

// --- The converter ---

// A GLONASS satellite that sends no four-year interval or no day in it: both count from 1 (GLONASS ICD, table 4.5).
bool LacksDate(const C_FrameDecoder& decoder) {
  constexpr unsigned int kDaysInFourYears = 1461;
  const P* const record = decoder.PvaEphemeris();
  if (record == nullptr || record->System != ALGO::GNSS_GLONASS) return false;
  return record->N4 == 0 || record->Nt == 0 || record->Nt > kDaysInFourYears;
}

// What `C_GnssTime` has right dates for.
bool IsInCalendar(double epoch) {
  constexpr double kDaysTo2101 = 44190;  // from 6 January 1980 to 1 January 2101
  return epoch >= 0 && epoch < kDaysTo2101 * kSecondsPerDay;
}

class C_RinexNav : public C_Converter {
 public:
  explicit C_RinexNav(const S_RinexNavOptions& options)
      : m_options(options), m_isSelected(SelectSystems(options.systems)) {}

  void BeginInput(const std::string& name) override { m_input = name; }
  void Take(const S_DecodedFrame& decoded, std::string& text) override;
  void EndInput(const C_FrameDecoder& decoder, std::string& text) override;
  eExitCode Finish(std::string& text) override;

 private:
  void LeaveOut(const S_DecodedFrame& decoded, const std::string& reason);
  std::string RunDate() const;
  std::string_view Title() const;
  void AppendHeader(std::string& text) const;

  S_RinexNavOptions m_options;
  std::array<bool, kNumSystems> m_isSelected;
  std::string m_input;
  std::set<S_NavRecord> m_records;                // of equal ones the first that came
  std::map<std::string, unsigned int> m_leftOut;  // ephemerides, by the reason
  std::string m_lastDate;                         // of the inputs' sentences, ISO 8601
};

// Why the ephemeris that the decoder has tried cannot be written; empty when nothing stands against it.
std::string Objection(const C_FrameDecoder& decoder) {
  const unsigned int result = decoder.Result().value_or(eResultOk);
  if (decoder.IsWeekUnresolved())
    return fmt::format("week not known (result {}); tell the time of the recording with --seed WEEK:SECONDS", result);
  if (result != eResultOk) return fmt::format("{} (result {})", ResultText(result), result);
  if (LacksDate(decoder)) return "the satellite sends no date";
  return {};
}

void C_RinexNav::Take(const S_DecodedFrame& decoded, std::string&) {
  const std::size_t system = SystemOf(decoded.frame);
  if (system == kNumSystems || !m_isSelected[system]) return;
  if (const std::string reason = Objection(decoded.decoder); !reason.empty()) return LeaveOut(decoded, reason);
  S_NavRecord record = kSystems[system].recordOf(system, decoded.decoder);
  if (!IsInCalendar(record.epoch)) return LeaveOut(decoded, "its date is not one from 1980 to 2100");
  const int prn = std::exchange(record.satellite, record.satellite - kSystems[system].satelliteOffset);
  if (record.satellite < 1 || record.satellite > kMaxNumber)
    return LeaveOut(decoded, fmt::format("RINEX has no number for {} {}", kSystems[system].name, prn));
  m_records.insert(std::move(record));
}

void C_RinexNav::LeaveOut(const S_DecodedFrame& decoded, const std::string& reason) {
  const C_MessageName message(decoded.frame.protocol, decoded.frame.messageType);
  ReportDetail(fmt::format("{}: {} at {} left out: {}", m_input, message.Text(), decoded.offset, reason));
  ++m_leftOut[reason];
}

// Dates as ISO 8601 stand in the order of their times; without a date the text is but a time of day.
void C_RinexNav::EndInput(const C_FrameDecoder& decoder, std::string&) {
  const C_TimeText time = decoder.Clock().Text(decoder.Clock().Seconds());
  if (time.Text().ends_with('Z')) m_lastDate = std::max(m_lastDate, std::string(time.Text()));
}

eExitCode C_RinexNav::Finish(std::string& text) {
  for (const auto& [reason, count] : m_leftOut) ReportError(fmt::format("ephemerides left out: {}; {}", count, reason));
  if (m_records.empty()) {
    ReportWarning("no ephemeris to write");
    return eExitData;
  }
  AppendHeader(text);
  for (const S_NavRecord& record : m_records) AppendRecord(text, record);
  return m_leftOut.empty() ? eExitOk : eExitData;
}

// "20240518 220000 UTC".
std::string C_RinexNav::RunDate() const {
  if (m_options.runDate == "now") return fmt::format("{:%Y%m%d %H%M%S} UTC", fmt::gmtime(std::time(nullptr)));
  std::string date = m_lastDate.empty() ? EpochText(m_records.rbegin()->epoch) : m_lastDate;
  std::erase_if(date, [](char c) { return c < '0' || c > '9'; });
  return fmt::format("{} {} UTC", date.substr(0, 8), date.substr(8, 6));
}

std::string_view C_RinexNav::Title() const {
  const std::size_t first = m_records.begin()->system;
  const bool isMixed = std::any_of(m_records.begin(), m_records.end(),
                                   [first](const S_NavRecord& record) { return record.system != first; });
  return isMixed ? "M: Mixed" : kSystems[first].title;
}

// RINEX 3.05 knows marker and agency in observation files only: here they are comments.
void C_RinexNav::AppendHeader(std::string& text) const {
  AppendHeaderLine(text, fmt::format("{:9.2f}{:11}{:<20}{}", 3.05, "", "N: GNSS NAV DATA", Title()),
                   "RINEX VERSION / TYPE");
  AppendHeaderLine(text, fmt::format("{:<20}{:<20}{}", "velagnss " VELAGNSS_VERSION, m_options.runBy, RunDate()),
                   "PGM / RUN BY / DATE");
  if (!m_options.marker.empty())
    AppendHeaderLine(text, fmt::format("{}{}", kMarkerComment, m_options.marker), "COMMENT");
  if (!m_options.agency.empty())
    AppendHeaderLine(text, fmt::format("{}{}", kAgencyComment, m_options.agency), "COMMENT");
  AppendHeaderLine(text, "", "END OF HEADER");
}

}  // namespace

void DeclareRinexNavOptions(CLI::App& app, S_RinexNavOptions& options) {
  const std::string group(kRinexNavGroup);
  app.add_option("--system", options.systems, "these systems only, of: " + SystemNames())
      ->option_text("LIST")
      ->allow_extra_args(false)
      ->check(&CheckSystems)
      ->group(group);
  app.add_option("--marker", options.marker, "name of the marker, for a comment in the header")
      ->option_text("NAME")
      ->check(HeaderText(kHeaderWidth - kMarkerComment.size()))
      ->group(group);
  app.add_option("--agency", options.agency, "name of the observing agency, for a comment in the header")
      ->option_text("NAME")
      ->check(HeaderText(kHeaderWidth - kAgencyComment.size()))
      ->group(group);
  app.add_option("--run-by", options.runBy, "who makes the file, for the header")
      ->option_text("NAME")
      ->check(HeaderText(kRunByWidth))
      ->group(group);
  app.add_option("--run-date", options.runDate,
                 "date in the header: the last one of the stream, or the machine's, which\n"
                 "makes the file another one each time")
      ->option_text("stream|now")
      ->check(CLI::IsMember({"stream", "now"}))
      ->group(group);
}

std::unique_ptr<C_Converter> MakeRinexNav(const S_RinexNavOptions& options) {
  return std::make_unique<C_RinexNav>(options);
}

}  // namespace Host
