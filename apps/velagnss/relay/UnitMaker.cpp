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

S_UnitOrigin OriginOf(const velagnss::Frame& frame) {
  const std::string_view unlisted = velagnss::UnlistedName(frame);
  const velagnss::MessageName listed(frame.protocol, frame.message);
  return {frame.offset, velagnss::ProtocolName(frame.protocol),
          std::string(unlisted.empty() ? listed.Text() : unlisted)};
}

class C_PieceMaker : public C_UnitMaker, public C_RecordConsumer {
 public:
  C_RecordConsumer& Consumer() override { return *this; }
  std::size_t Size() const override { return m_piece.bytes.size(); }
  t_Piece Take() override {
    if (m_piece.ends.empty()) return nullptr;
    m_piece.input = m_input;
    return std::make_shared<const S_Piece>(std::exchange(m_piece, {}));
  }

 protected:
  S_Piece m_piece;
};

class C_RawUnits : public C_PieceMaker {
 public:
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
  explicit C_FrameUnits(const C_MessageFilter& filter) : m_filter(filter) {}

  bool NeedsRecords() const override { return m_filter.UsesTime(); }
  bool GoesThroughRanges() const override { return m_filter.UsesTime(); }
  void Mute(bool isMute) override { m_isMute = isMute; }
  void BeginInput(const std::string&) override { m_filter.Restart(); }
  void OnFrame(const S_FrameRecord& record) override {
    if (!m_filter.Passes(record.frame, record.clock.Seconds()) || m_isMute) return;
    AppendFrame(record.frame, m_piece.bytes);
    m_piece.EndUnit();
    m_piece.origins.push_back(OriginOf(record.frame));
  }

 private:
  C_MessageFilter m_filter;
  bool m_isMute = false;
};

class C_JsonUnits : public C_UnitMaker {
 public:
  explicit C_JsonUnits(const S_JsonLinesOptions& options) : m_lines(options) {}

  C_RecordConsumer& Consumer() override { return m_lines; }
  std::size_t Size() const override { return m_lines.Text().Text().size(); }
  t_Piece Take() override;

 private:
  C_JsonLines m_lines;
};

t_Piece C_JsonUnits::Take() {
  S_Piece piece;
  piece.input = m_input;
  piece.bytes = m_lines.Text().Text();
  m_lines.Text().ClearText();
  if (piece.bytes.empty()) return nullptr;
  for (std::size_t end = piece.bytes.find('\n'); end != std::string::npos; end = piece.bytes.find('\n', end + 1))
    piece.ends.push_back(end + 1);
  return std::make_shared<const S_Piece>(std::move(piece));
}

struct S_UnitsRow {
  std::string_view name;
  eUnits units;
};
constexpr S_UnitsRow kRows[] = {
    {"raw", eUnits::Raw},
    {"frames", eUnits::Frames},
    {"json", eUnits::Json},
    {"epochs", eUnits::Epochs},
};

}  // namespace

std::string UnitNames() { return JoinNames(kRows, &S_UnitsRow::name, ", "); }

std::optional<eUnits> FindUnits(std::string_view name) {
  const auto* const found = std::ranges::find(kRows, name, &S_UnitsRow::name);
  return found == std::end(kRows) ? std::nullopt : std::optional(found->units);
}

std::unique_ptr<C_UnitMaker> MakeUnits(eUnits units, const C_MessageFilter& filter, bool namesInput) {
  if (units == eUnits::Raw) return std::make_unique<C_RawUnits>();
  if (units == eUnits::Frames) return std::make_unique<C_FrameUnits>(filter);
  S_JsonLinesOptions options;
  options.filter = filter;
  options.namesInput = namesInput;
  options.epochs = options.epochsOnly = units == eUnits::Epochs;
  return std::make_unique<C_JsonUnits>(options);
}

}  // namespace Host
