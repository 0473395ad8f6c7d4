#include "apps/velagnss/rinex/ObsConverter.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/rinex/EpochAssembler.h"
#include "apps/velagnss/rinex/FileName.h"
#include "apps/velagnss/rinex/ObsHeader.h"
#include "apps/velagnss/rinex/ObsSelection.h"
#include "apps/velagnss/rinex/ObsSpool.h"
#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/rinex/StationLines.h"
#include "apps/velagnss/text/AppendFormat.h"
#include "apps/velagnss/text/Numbers.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr std::size_t kCellWidth = 16;  // F14.3, loss of lock, signal strength

// A digit for the strength in dB-Hz, 1 to 9; a blank without one.
char StrengthDigit(double strength) {
  if (strength == kNoNumber) return ' ';
  return static_cast<char>('0' + std::clamp(static_cast<int>(strength / 6), 1, 9));
}

std::size_t KindOf(char letter) {
  std::size_t kind = 0;
  while (kind + 1 < kNumObsKinds && kObsKindLetters[kind] != letter) ++kind;
  return kind;
}

char LockDigit(const S_ObsSignal& signal) {
  const int digit = signal.flags & (S_ObsSignal::eLockLost | S_ObsSignal::eHalfCycle);
  return digit == 0 ? ' ' : static_cast<char>('0' + digit);
}

void AppendCell(std::string& text, const S_ObsSignal& signal, std::size_t kind) {
  if (signal.values[kind] == kNoNumber) return text.append(kCellWidth, ' '), void();
  const bool isPhase = kind == ePhase;
  const bool hasDigit = isPhase || (kind == ePseudorange && signal.values[ePhase] == kNoNumber);
  AppendFormat(text, "{:14.3f}{}{}", signal.values[kind], isPhase ? LockDigit(signal) : ' ',
               hasDigit ? StrengthDigit(signal.values[eStrength]) : ' ');
}

// ms.
std::int64_t SplitLength(const std::string& split) {
  constexpr std::int64_t kHour = 3600 * kMsPerSecond;
  return split == "1h" ? kHour : 24 * kHour;
}

class C_ObsConverter : public C_TextConsumer {
 public:
  explicit C_ObsConverter(const S_RinexOptions& options);

  void BeginInput(const std::string& name) override;
  void OnFrame(const S_FrameRecord& record) override;
  void EndInput(const S_InputEnd& end) override;
  void Finish() override;
  eExitCode Judge() const override { return m_pieces.empty() || !m_leftOut.IsEmpty() ? eExitData : eExitOk; }

 private:
  bool IsOfOtherStation(const S_FrameRecord& record);
  void NoteChannel(const velagnss::Record& record);
  void NoteStation(const velagnss::Record& record);
  void AddEpoch(const S_ObsEpoch& epoch);
  void LeaveOut(const std::string& reason);
  std::int64_t PieceOf(std::int64_t time) const;
  void AppendToPiece(const S_ObsEpoch& epoch);
  void BeginPiece(std::int64_t piece);
  void AppendChanges();
  void AppendEpoch(const S_ObsEpoch& epoch);
  void AppendSatellite(const S_ObsSignal* begin, const S_ObsSignal* end);

  S_RinexOptions m_options;
  std::string m_input;
  std::string m_where;  // the frame that is looked at
  std::optional<unsigned short> m_station;
  C_StationLines m_stationLines;
  bool m_hasQuarterCycles = false;
  C_StreamFacts m_facts;
  C_LeftOut m_leftOut;
  S_ObsContext m_context;
  C_ObsSpool m_spool;
  C_EpochAssembler m_assembler;
  std::map<std::string, std::string> m_laterChanges;  // of header lines, after the open epoch

  // When the files are written, one for each piece of time.
  std::map<std::int64_t, C_ObsContents> m_pieces;
  std::optional<std::int64_t> m_piece;           // the one that is being written
  t_ObsTypes m_types;                            // its columns
  std::map<std::string, std::string> m_lines;    // of the station, now
  std::map<std::string, std::string> m_changes;  // of them, since the last epoch
};

C_ObsConverter::C_ObsConverter(const S_RinexOptions& options)
    : m_options(options),
      m_stationLines(options),
      m_assembler([this](const S_ObsEpoch& epoch) { AddEpoch(epoch); },
                  [this](const std::string& reason) { LeaveOut(reason); }) {
  unsigned short station = 0;
  if (ParseWhole(std::string_view(options.station), station)) m_station = station;
  m_context.channels.fill(NA_CHANNEL);
}

void C_ObsConverter::BeginInput(const std::string& name) {
  m_input = name;
  m_context.firstDated.emplace_back();
}

void C_ObsConverter::OnFrame(const S_FrameRecord& record) {
  if (record.frame.protocol == C_RawDataMessage::eNMEA0183) return;
  m_facts.Note(record.decoded.record);
  NoteChannel(record.decoded.record);
  const velagnss::MessageName message(record.frame.protocol, record.frame.message);
  m_where = fmt::format("{}: {} at {}", m_input, message.Text(), record.frame.offset);
  if (IsOfOtherStation(record)) return;
  NoteStation(record.decoded.record);
  if (const auto* const observations = std::get_if<velagnss::Rtcm3Observations>(&record.decoded.record))
    m_assembler.Add(*observations);
}

// The station of the file is that of its first observations.
bool C_ObsConverter::IsOfOtherStation(const S_FrameRecord& record) {
  const std::optional<unsigned short> station = StationOf(record.decoded.record);
  const bool isObservation = std::holds_alternative<velagnss::Rtcm3Observations>(record.decoded.record);
  if (!station || station == m_station) return false;
  if (!m_station && isObservation) m_station = station;
  if (!m_station || station == m_station) return false;
  if (isObservation && m_options.station.empty())
    LeaveOut(fmt::format("of station {}; the file is of station {}: choose with --station", *station, *m_station));
  return true;
}

void C_ObsConverter::NoteChannel(const velagnss::Record& record) {
  const auto note = [this](unsigned char slot, signed char channel) {
    if (!IsNotAvailable(channel)) m_context.channels[slot] = channel;
  };
  if (const auto* const binary = std::get_if<S_IFPvaEphRec>(&record)) note(binary->SvId, binary->FreqChannel);
  if (const auto* const rtcm = std::get_if<velagnss::Rtcm3PvaEphemeris>(&record))
    note(rtcm->ephemeris.SvId, rtcm->ephemeris.FreqChannel);
  const auto* const message = std::get_if<velagnss::Rtcm3Observations>(&record);
  for (unsigned int i = 0; message != nullptr && i < message->numSatellites; ++i)
    note(message->satellites[i].svId, message->satellites[i].channel);
}

void C_ObsConverter::NoteStation(const velagnss::Record& record) {
  if (const auto* const biases = std::get_if<velagnss::Rtcm3GlonassBiases>(&record)) m_context.biases = *biases;
  if (const auto* const station = std::get_if<velagnss::Rtcm3Station>(&record))
    m_hasQuarterCycles = station->quarterCycle == 1;
  m_stationLines.Note(record, [this](std::string_view label, std::string_view content) {
    if (m_assembler.IsOpen())
      m_laterChanges[std::string(label)] = content;
    else
      m_spool.Add(C_ObsSpool::S_Change{label, content});
  });
}

void C_ObsConverter::AddEpoch(const S_ObsEpoch& epoch) {
  std::optional<std::int64_t>& first = m_context.firstDated[epoch.input];
  if (epoch.date == S_ObsEpoch::eDate::Known && !first) first = epoch.time;
  m_spool.Add(epoch);
  for (const auto& [label, content] : std::exchange(m_laterChanges, {}))
    m_spool.Add(C_ObsSpool::S_Change{label, content});
}

void C_ObsConverter::LeaveOut(const std::string& reason) { m_leftOut.Add(m_where, reason); }

// The first date may come after the last observation. A minute is more than the leap seconds, which `FirstDate` lacks,
// and the seconds by which a message with a date may be late.
void C_ObsConverter::EndInput(const S_InputEnd& end) {
  constexpr std::int64_t kMargin = 60 * kMsPerSecond;
  m_assembler.EndInput();
  std::optional<std::int64_t>& first = m_context.firstDated.back();
  if (const std::optional<C_GnssTime>& date = end.clock.FirstDate(); date && !first)
    first = date->m_week * kMsPerWeek + std::llround(date->m_secOfWeek * double{kMsPerSecond}) + kMargin;
  m_facts.EndInput(end);
}

void C_ObsConverter::Finish() {
  C_ObsSelection first(m_options, m_context, &m_leftOut);
  m_spool.ForEach(
      [&](S_ObsEpoch& epoch) {
        if (first.Take(epoch)) m_pieces[PieceOf(epoch.time)].Note(epoch);
      },
      [](const C_ObsSpool::S_Change&) {});
  m_leftOut.Report("observations");
  if (m_pieces.empty()) return ReportWarning("no observation to write");
  m_lines = m_stationLines.First();
  C_ObsSelection second(m_options, m_context, nullptr);
  m_spool.ForEach(
      [&](S_ObsEpoch& epoch) {
        if (second.Take(epoch)) AppendToPiece(epoch);
      },
      [this](const C_ObsSpool::S_Change& change) { m_changes[std::string(change.label)] = change.content; });
}

std::int64_t C_ObsConverter::PieceOf(std::int64_t time) const {
  return m_options.split.empty() ? 0 : time / SplitLength(m_options.split);
}

void C_ObsConverter::AppendToPiece(const S_ObsEpoch& epoch) {
  const std::int64_t piece = PieceOf(epoch.time);
  const bool begins = !m_piece || *m_piece != piece;
  for (const auto& [label, content] : m_changes) m_lines[label] = content;
  if (begins)
    BeginPiece(piece);
  else
    AppendChanges();
  m_changes.clear();
  AppendEpoch(epoch);
  Drain();
}

// The nominal start of a file that is not split is that of its first minute.
void C_ObsConverter::BeginPiece(std::int64_t piece) {
  constexpr std::int64_t kMinute = 60 * kMsPerSecond;
  const C_ObsContents& contents = m_pieces.at(piece);
  const std::int64_t length = m_options.split.empty() ? 0 : SplitLength(m_options.split);
  const std::int64_t start = length > 0 ? piece * length : contents.First() / kMinute * kMinute;
  const std::int64_t duration = length > 0 ? length : contents.Last() + contents.Interval() - start;
  const std::string marker = MarkerName(m_options.marker, *m_station);
  m_piece = piece;
  BeginFile(RinexFileName({marker, start, duration, contents.Interval(), SystemLetter(contents)}));
  const t_ObsTypes wanted = ReadObsTypes(m_options.obsTypes);
  for (std::size_t system = 0; system < kNumNavSystems; ++system) m_types[system] = contents.Types(system, wanted);
  AppendObsHeader(m_text, {m_options, m_facts, m_context, contents, m_types, m_lines, marker, m_hasQuarterCycles});
}

// An event of header lines that hold from the next epoch on; it has no time of its own. A new site must come with the
// name of its marker.
void C_ObsConverter::AppendChanges() {
  constexpr int kNewSite = 3, kHeaderRecords = 4;
  if (m_changes.empty()) return;
  const int flag = m_changes.contains(std::string(kMarkerLabel)) ? kNewSite : kHeaderRecords;
  m_text += fmt::format(">{:31}{:3}\n", flag, m_changes.size());
  for (const auto& [label, content] : m_changes) AppendHeaderLine(m_text, content, label);
}

void C_ObsConverter::AppendEpoch(const S_ObsEpoch& epoch) {
  const auto begin = epoch.signals.begin();
  const auto differs = [](const S_ObsSignal& a, const S_ObsSignal& b) {
    return a.system != b.system || a.number != b.number;
  };
  unsigned int satellites = 1;
  for (std::size_t i = 1; i < epoch.signals.size(); ++i)
    satellites += differs(epoch.signals[i - 1], epoch.signals[i]) ? 1 : 0;
  const S_RinexTime time = RinexTime(epoch.time);
  AppendFormat(m_text, "> {:04} {:02} {:02} {:02} {:02}{:11.7f}  0{:3}\n", time.year, time.month, time.day, time.hour,
               time.minute, time.second, satellites);
  for (auto from = begin; from != epoch.signals.end();) {
    const auto to = std::find_if(from, epoch.signals.end(), [&](const S_ObsSignal& s) { return differs(*from, s); });
    AppendSatellite(&*from, &*from + (to - from));
    from = to;
  }
}

void C_ObsConverter::AppendSatellite(const S_ObsSignal* begin, const S_ObsSignal* end) {
  AppendFormat(m_text, "{}{:02}", NavSystems()[begin->system].letter, begin->number);
  for (const std::string& type : m_types[begin->system]) {
    const t_SignalCode code = {type[1], type[2]};
    const auto* const signal = std::find_if(begin, end, [code](const S_ObsSignal& s) { return s.code == code; });
    if (signal == end)
      m_text.append(kCellWidth, ' ');
    else
      AppendCell(m_text, *signal, KindOf(type[0]));
  }
  EndRinexLine(m_text);
}

}  // namespace

std::unique_ptr<C_TextConsumer> MakeObsConverter(const S_RinexOptions& options) {
  return std::make_unique<C_ObsConverter>(options);
}

}  // namespace Host
