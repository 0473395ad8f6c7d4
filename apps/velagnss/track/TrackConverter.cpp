#include "apps/velagnss/track/TrackConverter.h"

#include <fmt/format.h>

#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

class C_TrackConverter : public C_Converter, private C_TrackSink {
 public:
  explicit C_TrackConverter(std::unique_ptr<C_TrackFormat> format) : m_format(std::move(format)), m_builder(*this) {
    m_format->Begin(m_text);
  }

  void Take(const S_DecodedFrame& decoded, std::string& text) override;
  void EndInput(const C_FrameDecoder& decoder, std::string& text) override;
  eExitCode Finish(std::string& text) override;

 private:
  void OnPoint(const S_TrackPoint& point) override;
  void HandOver(std::string& text);

  std::unique_ptr<C_TrackFormat> m_format;
  C_TrackBuilder m_builder;
  std::string m_text;  // not handed over yet
  std::uint64_t m_segments = 0;
  std::uint64_t m_points = 0;
};

void C_TrackConverter::Take(const S_DecodedFrame& decoded, std::string& text) {
  const U_EcdDcdData* const sentence = decoded.decoder.Sentence();
  if (sentence == nullptr) return;
  const auto type = static_cast<C_RawDataMessage::eNMEA0183Messages>(decoded.frame.messageType);
  m_builder.Take(type, *sentence, decoded.decoder.Clock());
  HandOver(text);
}

void C_TrackConverter::EndInput(const C_FrameDecoder& decoder, std::string& text) {
  m_builder.Finish(decoder.Clock());
  HandOver(text);
}

void C_TrackConverter::OnPoint(const S_TrackPoint& point) {
  if (point.startsSegment && m_points > 0) m_format->EndSegment(m_text);
  if (point.startsSegment) m_format->BeginSegment(m_text);
  m_segments += point.startsSegment ? 1 : 0;
  ++m_points;
  m_format->Add(point, m_text);
}

eExitCode C_TrackConverter::Finish(std::string& text) {
  if (m_points > 0) m_format->EndSegment(m_text);
  m_format->End(m_text);
  HandOver(text);
  ReportDetail(fmt::format("{} positions in {} segments written", m_points, m_segments));
  if (m_points > 0) return eExitOk;
  ReportWarning("no position: no GGA, GNS, RMC or GLL with a fix");
  return eExitData;
}

void C_TrackConverter::HandOver(std::string& text) {
  text += m_text;
  m_text.clear();
}

class C_SentenceConverter : public C_Converter {
 public:
  void Take(const S_DecodedFrame& decoded, std::string& text) override;
  eExitCode Finish(std::string& text) override;

 private:
  std::uint64_t m_sentences = 0;
};

void C_SentenceConverter::Take(const S_DecodedFrame& decoded, std::string& text) {
  if (decoded.frame.protocol != C_RawDataMessage::eNMEA0183) return;
  const std::string_view sentence(reinterpret_cast<const char*>(decoded.frame.data), decoded.frame.length);
  text.append(sentence.substr(0, sentence.find_first_of("\r\n"))).append("\r\n");
  ++m_sentences;
}

eExitCode C_SentenceConverter::Finish(std::string&) {
  ReportDetail(fmt::format("{} sentences written", m_sentences));
  if (m_sentences > 0) return eExitOk;
  ReportWarning("no NMEA 0183 sentence");
  return eExitData;
}

}  // namespace

std::unique_ptr<C_Converter> MakeTrackConverter(std::unique_ptr<C_TrackFormat> format) {
  return std::make_unique<C_TrackConverter>(std::move(format));
}

std::unique_ptr<C_Converter> MakeSentenceConverter() { return std::make_unique<C_SentenceConverter>(); }

}  // namespace Host
