// Recordings as a source whose bytes arrive with their original timing.
#ifndef VELAGNSS_APPS_REPLAY_SOURCE_H
#define VELAGNSS_APPS_REPLAY_SOURCE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/record/ReplayReader.h"

namespace Host {

struct S_ReplayOptions {
  std::vector<std::string> files;
  std::optional<double> speed = 1;  // times that of the recording; none: as fast as it is read
  bool loops = false;
  C_ReplayReader::t_MaxGap maxGap;
};

// Each piece has a time of its own, counted from the first: late ones do not delay the others.
class C_ReplaySource : public C_ByteSource {
 public:
  explicit C_ReplaySource(S_ReplayOptions options);

  const std::string& Name() const override { return m_name; }
  int Descriptor() const override { return m_timer.Get(); }
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override;

 private:
  bool Fetch();
  bool Restart();
  t_SteadyTime DueTime() const;
  void SetTimer();

  const S_ReplayOptions m_options;
  std::string m_name;
  C_FileDescriptor m_timer;  // none at full speed
  std::unique_ptr<C_ReplayReader> m_reader;
  S_ReplayPiece m_piece;
  std::size_t m_used = 0;   // of the piece
  bool m_hasGiven = false;  // since the recording began, or began again
  bool m_hasFailed = false;
  bool m_hasLooped = false;
  t_SteadyTime m_start;
  std::chrono::microseconds m_before{};  // the times of all earlier rounds
};

}  // namespace Host

#endif  // VELAGNSS_APPS_REPLAY_SOURCE_H
