// A destination that readers come to: each gets the stream from then on.
#ifndef VELAGNSS_APPS_READER_SINK_H
#define VELAGNSS_APPS_READER_SINK_H

#include "apps/velagnss/sinks/live/Readers.h"
#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

class C_ReaderSink : public C_NetSink {
 protected:
  explicit C_ReaderSink(const S_SinkMaking& making);

  void AddReader(C_Readers::S_Newcomer newcomer);

  // No more of them come.
  virtual void StopListening() = 0;

  void OnPiece(const t_Piece& piece) override { m_readers.Put(piece); }
  void OnTick(t_Clock::time_point now) override { m_readers.CheckProgress(now); }
  void BeginFinish() override;

 private:
  void OnLeave(const std::string& name, const std::string& why);

  C_Readers m_readers;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_READER_SINK_H
