// A file or standard output as a destination.
#ifndef VELAGNSS_APPS_FILE_SINK_H
#define VELAGNSS_APPS_FILE_SINK_H

#include <string>
#include <utility>

#include "apps/velagnss/sinks/Output.h"
#include "apps/velagnss/sinks/live/Sink.h"

namespace Host {

// Written to by the main thread. A full disk ends this destination, and the others go on.
class C_FileSink : public C_Sink {
 public:
  C_FileSink(std::string name, C_Output::eWriting writing) : m_name(std::move(name)), m_writing(writing) {}

  const std::string& Name() const override { return m_name; }
  bool Open() override { return m_output.Open(m_name, m_writing); }
  void Put(const t_Piece& piece) override;
  bool HasEnded() const override { return m_output.HasFailed(); }
  void Finish() override { m_output.Close(); }
  bool IsFinished() const override { return true; }
  bool HasFailed() const override { return m_output.HasFailed() && !m_output.HasReaderLeft(); }
  S_SinkTotals Totals() const override { return m_totals; }

 private:
  std::string m_name;
  C_Output::eWriting m_writing;
  C_Output m_output;
  S_SinkTotals m_totals;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_SINK_H
