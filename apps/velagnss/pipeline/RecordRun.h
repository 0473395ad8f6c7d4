// The one way from bytes to consumers: inputs, frames, records.
#ifndef VELAGNSS_APPS_RECORD_RUN_H
#define VELAGNSS_APPS_RECORD_RUN_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

#include "apps/velagnss/input/StreamJob.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// How a stream is read.
struct S_RunOptions {
  std::vector<C_RawDataMessage::eProtocols> search;  // protocols to look for
  std::optional<C_GnssTime> seed;                    // the user's
  bool acceptsUnlisted = true;                       // checked frames that are not listed, too
  std::optional<unsigned int> firstDay = {};         // MJD of the first time of each input, the user's
};

// Each input is searched for frames, each frame is decoded once, and the consumers get both in their order.
class C_RecordRun : public C_StreamJob {
 public:
  // The consumers must outlive the run.
  C_RecordRun(const S_RunOptions& options, std::initializer_list<C_RecordConsumer*> consumers);

  void BeginInput(const std::string& name) override;
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;
  bool WantsMore() const override;  // as long as one of the consumers does
  void BeforeWait() override;
  void Finish() override;

  // The worst verdict of the consumers.
  eExitCode Judge() const;

  // Of all inputs so far.
  std::uint64_t BytesRead() const { return m_bytesRead; }
  std::uint64_t FramesFound() const { return m_framesFound; }

 private:
  void Pump();
  void HandOut(const velagnss::Frame& frame);
  template <class Give>
  void ForEachActive(const Give& give);
  void SelectActive();

  std::vector<C_RecordConsumer*> m_consumers;
  std::vector<C_RecordConsumer*> m_active;  // those that want more
  bool m_needsRecords;
  velagnss::FrameReader m_reader;
  velagnss::RecordDecoder m_decoder;
  const velagnss::DecodedFrame m_notDecoded;
  std::uint64_t m_bytesRead = 0;
  std::uint64_t m_framesFound = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_RUN_H
