// The destinations of one run: what `--to` names, and what each of them gets.
#ifndef VELAGNSS_APPS_DESTINATIONS_H
#define VELAGNSS_APPS_DESTINATIONS_H

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "apps/velagnss/input/Inputs.h"
#include "apps/velagnss/relay/UnitMaker.h"
#include "apps/velagnss/sinks/live/Sinks.h"

namespace Host {

// What decides how a stream may be handed on.
struct S_RelaySource {
  bool isSelected = false;       // something of it is left out
  bool isOne = true;             // rather than several at once
  bool isLive = false;           // it cannot wait
  bool isInOrder = true;         // rather than parts of inputs, as they come
  std::string credentials = {};  // for casters; the name of a file
};

//   C_Destinations destinations;
//   if (std::string error = destinations.Read(texts, source); !error.empty()) ...
//   if (!destinations.Open()) return eExitOutput;
//   ... C_RelayJob (RelayJob.h) for each source ...
//   destinations.Finish();
class C_Destinations {
 public:
  C_Destinations();
  ~C_Destinations();
  C_Destinations(const C_Destinations&) = delete;
  C_Destinations& operator=(const C_Destinations&) = delete;

  // `texts`: "FORMAT:DESTINATION", "FORMAT", or "DESTINATION". Without a format, bytes are handed on as they came when
  // there is one source of which nothing is left out, and as frames otherwise and to casters. Returns an error text.
  std::string Read(const std::vector<std::string>& texts, const S_RelaySource& source);

  // The files and standard output ("-") among them.
  std::vector<std::string> Files() const;

  // False, reported, when one of them can never take anything.
  bool Open();

  // Waits until this many clients have come. False after a signal.
  bool WaitForClients(std::uint64_t count);

  // What the destinations want.
  std::set<eUnits> Units() const;

  // Hands `piece` to those that want such units.
  void Put(eUnits units, const t_Piece& piece);

  // Shows messages. Where the source can wait, waits until no destination is full.
  void Settle();

  // Becomes readable when `Settle` has something to do.
  int WakeDescriptor() const;

  // Whether one can still take something.
  bool WantsMore() const;

  // Sends what waits, ends all connections, and closes the files: within 2 s after a signal, otherwise as long as
  // something moves.
  void Finish();

  // Of each destination.
  std::vector<S_SinkTotals> Totals() const;

  // After `Finish`: eExitOutput, reported, when something was lost that should not have been.
  eExitCode Judge() const;

 private:
  struct S_Destination {
    eUnits units;
    std::string where;
    std::unique_ptr<C_Sink> sink;
  };

  std::string ReadOne(const std::string& text, const S_RelaySource& source);
  bool AreFinished() const;
  std::uint64_t BytesSent() const;
  void ReportTotals() const;

  bool m_canWait = false;
  bool m_isInOrder = true;
  std::string m_credentials;
  std::unique_ptr<C_SinkThread> m_thread;  // from `Open` on
  std::unique_ptr<C_Casters> m_casters;
  std::vector<S_Destination> m_destinations;
  bool m_isComplete = false;  // everything has been sent
};

}  // namespace Host

#endif  // VELAGNSS_APPS_DESTINATIONS_H
