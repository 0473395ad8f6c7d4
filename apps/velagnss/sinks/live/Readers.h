// The readers of a stream that others connect to.
#ifndef VELAGNSS_APPS_READERS_H
#define VELAGNSS_APPS_READERS_H

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/sinks/live/Outlet.h"
#include "apps/velagnss/sinks/live/Sink.h"

namespace asio {
class io_context;
}

namespace Host {

// How many may be connected.
struct S_ReaderLimits {
  std::size_t all = 500;
  std::size_t perAddress = 100;  // of other machines
};

// Who is connected: a guard against those who connect again and again.
class C_Admission {
 public:
  explicit C_Admission(const S_ReaderLimits& limits) : m_limits(limits) {}

  // A place, which is free again when the last copy of the pass goes; null when there is none. No more than the limit
  // for all have the same `address`, which is empty for this machine.
  using t_Pass = std::shared_ptr<void>;
  t_Pass Admit(const std::string& address);

 private:
  struct S_State {
    std::size_t all = 0;
    std::map<std::string, std::size_t> byAddress;
  };

  S_ReaderLimits m_limits;
  std::shared_ptr<S_State> m_state = std::make_shared<S_State>();  // passes may be held for longer
};

// Each reader has a queue of its own, so none waits for another.
class C_Readers {
 public:
  using t_Clock = C_Outlet::t_Clock;

  // `onLeave`: a reader, by its name, has left, and why.
  using t_OnLeave = std::function<void(const std::string& name, const std::string& why)>;
  C_Readers(asio::io_context& context, const S_QueueLimits& limits, t_SinkCounters counters, t_OnLeave onLeave)
      : m_context(context), m_limits(limits), m_counters(std::move(counters)), m_onLeave(std::move(onLeave)) {}

  struct S_Newcomer {
    C_FileDescriptor socket;
    std::string name;
    std::string head;  // sent first
    bool usesChunks = false;
    C_Admission::t_Pass pass;
  };
  void Add(S_Newcomer newcomer);

  // Gets its head and nothing else.
  void Dismiss(S_Newcomer newcomer);

  void Put(const t_Piece& piece);
  void CheckProgress(t_Clock::time_point now);

  // Every reader gets what waits for it.
  void Finish();
  bool IsEmpty() const { return m_readers.empty(); }

 private:
  struct S_Reader {
    std::shared_ptr<C_Outlet> outlet;
    std::string name;
    C_Admission::t_Pass pass;
  };

  void OnEnd(std::uint64_t number, const std::string& why);

  asio::io_context& m_context;
  S_QueueLimits m_limits;
  t_SinkCounters m_counters;
  t_OnLeave m_onLeave;
  std::map<std::uint64_t, S_Reader> m_readers;  // by the order in which they came
};

}  // namespace Host

#endif  // VELAGNSS_APPS_READERS_H
