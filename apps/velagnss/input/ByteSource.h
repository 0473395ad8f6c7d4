// Where the bytes come from: one interface for files, pipes, devices, and whatever else the system gives a descriptor.
//
// A new kind of source is a class with this interface; input/Inputs.cpp decides by the name which one to open.
#ifndef VELAGNSS_APPS_BYTE_SOURCE_H
#define VELAGNSS_APPS_BYTE_SOURCE_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace Host {

// Bytes that came in one piece.
struct S_Chunk {
  using t_Clock = std::chrono::system_clock;

  std::span<const unsigned char> bytes;  // in the buffer that was read into
  t_Clock::time_point arrival;           // when they were read, by the machine's clock
  bool isLive = false;                   // `arrival` means something: they came at that time from a receiver
};

// A change in the state of a live source.
struct S_LinkChange {
  enum class eState {
    Connecting,
    Connected,
    Lost,     // it will be tried again
    Refused,  // likewise, but slowly
    Failed,   // for good: the last of the source
    Notice,   // no change at all, but worth a line to the user
  };
  eState state = eState::Connecting;
  std::string text;                     // connected: the other end; afterwards: why; a notice: what
  std::chrono::milliseconds retryIn{};  // lost or refused
  unsigned int failures = 0;            // in a row, this one included
  S_Chunk::t_Clock::time_point at;
};

// A source reports its failures to the user itself, with what to do about them.
class C_ByteSource {
 public:
  enum class eRead {
    Bytes,    // at least one
    Nothing,  // none now, but more may follow
    Change,   // in the state of a live source
    End,
    Failed,  // reported
  };

  virtual ~C_ByteSource() = default;

  // For messages and records.
  virtual const std::string& Name() const = 0;

  // The descriptor that becomes readable when `Read` has something to say; -1 for a source that never waits, such as a
  // regular file.
  virtual int Descriptor() const = 0;

  // Reads at most `buffer.size()` bytes. It may wait when the descriptor has not become readable.
  virtual eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) = 0;

  // After eRead::Change.
  virtual const S_LinkChange& Change() const;

  // After this long without a byte the stream is taken to pause. None: it never does.
  virtual std::optional<std::chrono::milliseconds> QuietTime() const { return std::nullopt; }

  // Bytes to come; 0 when unknown.
  virtual std::uint64_t Size() const { return 0; }

  // Which stream it is, by its content where that can be read once more (InputIdentity.h). May take a while.
  virtual std::string Identity() const;

  // Of `Size`, what has been read. It may be less or more than what `Read` gave.
  virtual std::uint64_t Consumed() const { return 0; }
};

}  // namespace Host

#endif  // VELAGNSS_APPS_BYTE_SOURCE_H
