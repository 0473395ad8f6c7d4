#include "apps/velagnss/relay/UnitMaker.h"

#include <algorithm>
#include <utility>

#include "apps/velagnss/json/JsonLines.h"
#include "apps/velagnss/text/FrameBytes.h"
#include "apps/velagnss/text/Lists.h"
#include "stream/Names.h"

namespace Host {
namespace {

// A raw stream has no borders of its own, and a datagram of this size passes every Ethernet in one packet.
constexpr std::size_t kRawUnit = 1'400;

S_UnitOrigin OriginOf(const velagnss::Frame& frame, t_Arrival arrival) {
  const std::string_view unlisted = velagnss::UnlistedName(frame);
  const velagnss::MessageName listed(frame.protocol, frame.message);
  return {frame.offset, velagnss::ProtocolName(frame.protocol),
          std::string(unlisted.empty() ? listed.Text() : unlisted), arrival};
}

class C_PieceMaker : public C_UnitMaker, public C_RecordConsumer {
 public:
  explicit C_PieceMaker(std::string_view format) : m_format(format) {}

  C_RecordConsumer& Consumer() override { return *this; }
  std::size_t Size() const override { return m_piece.bytes.size(); }
  t_Piece Take() override {
    if (m_piece.ends.empty()) return nullptr;
    m_piece.format = m_format;
    m_piece.input = m_input;
    return std::make_shared<const S_Piece>(std::exchange(m_piece, {}));
  }

 protected:
  S_Piece m_piece;

 private:
  std::string_view m_format;
};

class C_RawUnits : public C_PieceMaker {
 public:
  using C_PieceMaker::C_PieceMaker;

  bool NeedsRecords() const override { return false; }
  void OnFrame(const S_FrameRecord&) override {}
  void OnBytes(std::span<const unsigned char> bytes, t_Arrival) override {
    while (!bytes.empty()) {
      const auto unit = bytes.first(std::min(bytes.size(), kRawUnit));
      m_piece.bytes.append(reinterpret_cast<const char*>(unit.data()), unit.size());
      m_piece.EndUnit();
      bytes = bytes.subspan(unit.size());
    }
  }
};

class C_FrameUnits : public C_PieceMaker {
 public:
  C_FrameUnits(std::string_view format, const C_MessageFilter& filter) : C_PieceMaker(format), m_filter(filter) {}

  bool NeedsRecords() const override { return m_filter.UsesTime(); }
  bool GoesThroughRanges() const override { return m_filter.UsesTime(); }
  void Mute(bool isMute) override { m_isMute = isMute; }
  void BeginInput(const std::string&) override { m_filter.Restart(); }
  void OnBytes(std::span<const unsigned char>, t_Arrival arrival) override { m_arrival = arrival; }
  void OnFrame(const S_FrameRecord& record) override {
    if (!m_filter.Passes(record.frame, record.clock.Seconds()) || m_isMute) return;
    AppendFrame(record.frame, m_piece.bytes);
    m_piece.EndUnit();
    m_piece.origins.push_back(OriginOf(record.frame, m_arrival));
  }

 private:
  C_MessageFilter m_filter;
  bool m_isMute = false;
  t_Arrival m_arrival;
};

class C_JsonUnits : public C_UnitMaker, public C_JsonLines {
 public:
  C_JsonUnits(std::string_view format, const S_JsonLinesOptions& options) : C_JsonLines(options), m_format(format) {}

  C_RecordConsumer& Consumer() override { return *this; }
  std::size_t Size() const override { return Text().Text().size(); }
  t_Piece Take() override;

  void OnBytes(std::span<const unsigned char> bytes, t_Arrival arrival) override {
    C_JsonLines::OnBytes(bytes, arrival);
    m_arrival = arrival;
  }
  void OnFrame(const S_FrameRecord& record) override {
    C_JsonLines::OnFrame(record);
    if (HasNewLine()) EndLine(OriginOf(record.frame, m_arrival));
  }

 private:
  void OnEpoch(S_Epoch&& epoch) override {
    const std::uint64_t offset = epoch.offset;
    C_JsonLines::OnEpoch(std::move(epoch));
    if (HasNewLine()) EndLine({offset, "epoch", "epoch", m_arrival});
  }
  bool HasNewLine() const { return Size() > (m_piece.ends.empty() ? 0 : m_piece.ends.back()); }
  void EndLine(S_UnitOrigin origin) {
    m_piece.ends.push_back(Size());
    m_piece.origins.push_back(std::move(origin));
  }

  std::string_view m_format;
  t_Arrival m_arrival;
  S_Piece m_piece;  // all but its bytes
};

t_Piece C_JsonUnits::Take() {
  if (HasNewLine()) EndLine({0, "event", "event", m_arrival});  // after the last frame
  if (m_piece.ends.empty()) return nullptr;
  m_piece.format = m_format;
  m_piece.input = m_input;
  m_piece.bytes = Text().Text();
  Text().ClearText();
  return std::make_shared<const S_Piece>(std::exchange(m_piece, {}));
}

struct S_UnitsRow {
  std::string_view name;
  eUnits units;
};
constexpr S_UnitsRow kRows[] = {
    {"raw", eUnits::Raw},       {"frames", eUnits::Frames}, {"json", eUnits::Json},
    {"epochs", eUnits::Epochs}, {"sqlite", eUnits::Rows},
};

}  // namespace

std::string UnitNames() { return JoinNames(kRows, &S_UnitsRow::name, ", "); }

std::optional<eUnits> FindUnits(std::string_view name) {
  const auto* const found = std::ranges::find(kRows, name, &S_UnitsRow::name);
  return found == std::end(kRows) ? std::nullopt : std::optional(found->units);
}

std::unique_ptr<C_UnitMaker> MakeUnits(eUnits units, const C_MessageFilter& filter, bool namesInput) {
  const std::string_view format = std::ranges::find(kRows, units, &S_UnitsRow::units)->name;
  if (units == eUnits::Raw) return std::make_unique<C_RawUnits>(format);
  if (units == eUnits::Frames) return std::make_unique<C_FrameUnits>(format, filter);
  S_JsonLinesOptions options;
  options.filter = filter;
  options.namesInput = namesInput && units != eUnits::Rows;
  options.events = units == eUnits::Rows;
  options.epochs = units == eUnits::Rows || units == eUnits::Epochs;
  options.epochsOnly = units == eUnits::Epochs;
  return std::make_unique<C_JsonUnits>(format, options);
}

}  // namespace Host
