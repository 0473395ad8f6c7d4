#include "apps/velagnss/nmea/SentenceConverter.h"

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/FrameBytes.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

class C_SentenceConverter : public C_TextConsumer {
 public:
  bool NeedsRecords() const override { return false; }
  void OnFrame(const S_FrameRecord& record) override;
  void Finish() override;
  eExitCode Judge() const override { return m_sentences > 0 ? eExitOk : eExitData; }

 private:
  std::uint64_t m_sentences = 0;
};

void C_SentenceConverter::OnFrame(const S_FrameRecord& record) {
  if (record.frame.protocol != C_RawDataMessage::eNMEA0183) return;
  AppendFrame(record.frame, m_text);
  ++m_sentences;
}

void C_SentenceConverter::Finish() {
  ReportDetail(Counted(m_sentences, "sentence") + " written");
  if (m_sentences == 0) ReportWarning("no NMEA 0183 sentence");
}

}  // namespace

std::unique_ptr<C_TextConsumer> MakeSentenceConverter() { return std::make_unique<C_SentenceConverter>(); }

}  // namespace Host
