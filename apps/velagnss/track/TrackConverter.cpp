#include "apps/velagnss/track/TrackConverter.h"

#include <fmt/core.h>

#include <filesystem>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

class C_TrackConverter : public C_TextConsumer, private C_TrackSink {
 public:
  explicit C_TrackConverter(std::unique_ptr<C_TrackFormat> format) : m_format(std::move(format)), m_builder(*this) {
    m_format->SetDrain([this] { Drain(); });
    m_format->Begin(m_text);
  }

  void OnFrame(const S_FrameRecord& record) override { m_builder.Take(record.decoded.record, record.clock); }
  void BeginInput(const std::string& name) override;
  void EndInput(const S_InputEnd& end) override;
  void Finish() override;
  eExitCode Judge() const override { return m_points > 0 ? eExitOk : eExitData; }

 private:
  void OnPoint(const S_TrackPoint& point) override;

  std::unique_ptr<C_TrackFormat> m_format;
  C_TrackBuilder m_builder;
  std::string m_name;     // of the input
  bool m_isOpen = false;  // a track of this input, and a segment of it
  std::uint64_t m_segments = 0;
  std::uint64_t m_points = 0;
};

void C_TrackConverter::OnPoint(const S_TrackPoint& point) {
  if (point.startsSegment && m_isOpen) m_format->EndSegment(m_text);
  if (!m_isOpen) m_format->BeginTrack(m_name, m_text);
  m_isOpen = true;
  if (point.startsSegment) m_format->BeginSegment(m_text);
  m_segments += point.startsSegment ? 1 : 0;
  ++m_points;
  m_format->Add(point, m_text);
}

void C_TrackConverter::BeginInput(const std::string& name) { m_name = std::filesystem::path(name).filename().string(); }

// The builder begins a segment with each input.
void C_TrackConverter::EndInput(const S_InputEnd& end) {
  m_builder.Finish(end.clock);
  if (!std::exchange(m_isOpen, false)) return;
  m_format->EndSegment(m_text);
  m_format->EndTrack(m_text);
}

// Without any point the document is still closed, so that its readers find an empty track and not a broken file.
void C_TrackConverter::Finish() {
  m_format->End(m_text);
  ReportDetail(fmt::format("{} in {} written", Counted(m_points, "position"), Counted(m_segments, "segment")));
  if (m_points == 0) ReportWarning("no position: no GGA, GNS, RMC or GLL with a fix");
}

}  // namespace

std::unique_ptr<C_TextConsumer> MakeTrackConverter(std::unique_ptr<C_TrackFormat> format) {
  return std::make_unique<C_TrackConverter>(std::move(format));
}

}  // namespace Host
