// Messages to a stream, each of which must be acknowledged, in an order that survives failures.
#ifndef VELAGNSS_APPS_NATS_PUBLISHER_H
#define VELAGNSS_APPS_NATS_PUBLISHER_H

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "apps/velagnss/net/nats/NatsSession.h"
#include "apps/velagnss/sinks/live/SendQueue.h"
#include "apps/velagnss/sinks/nats/StationNames.h"

namespace Host {

struct S_PublisherOptions {
  std::string prefix;           // of subjects: "gnss"
  std::string session;          // what tells runs apart in ids of live sources; empty: the time that each began
  std::size_t window = 0;       // messages that may wait for their acknowledgment
  bool creates = true;          // a stream that is missing
  bool resumes = true;          // leaves out what the stream already has of an input
  std::int64_t duplicates = 0;  // s, of a new stream
  std::int64_t replicas = 0;    // of a new stream
  std::string credentials = {};
  std::chrono::milliseconds stall{};  // without an acknowledgment, then the connection counts as lost
};

// Used by one thread.
//
// Order: messages leave one after the other over one connection, and the server stores what comes over a connection in
// its order. After any failure the connection is closed, and over the next one everything that is not acknowledged is
// sent again from the oldest message on, before anything newer; the server drops what it has stored before by the id.
// libnats must not reconnect by itself: it would send what is published meanwhile before we know what was lost. A
// stream that refuses messages when it is full could refuse a long one and store the short one after it, so it gets one
// at a time.
class C_NatsPublisher {
 public:
  using t_Say = std::function<void(const std::string& text)>;

  // `say`: what the user may want to know, called within the other calls.
  C_NatsPublisher(S_Address address, S_PublisherOptions options, C_StationNames stations, t_SinkCounters counters,
                  t_Say say);

  // Connects, and finds or creates the stream.
  t_NatsResult Open();
  void Close();

  // Where it is connected to.
  std::string Peer() const { return m_session.Peer(); }

  // Whether all that was added has left; then more can be added.
  bool WantsPiece() const { return m_numSent == m_flights.size(); }
  void Add(const t_Piece& piece);

  // Whether nothing waits for an acknowledgment.
  bool IsIdle() const { return m_flights.empty(); }

  // Sends what the window allows, and takes the acknowledgments that come within `wait`, or that have come.
  t_NatsResult Pump(std::chrono::milliseconds wait);

  // Units that the stream had already.
  std::uint64_t NumPresent() const { return m_numPresent; }

  // Units that are longer than the server or the stream accepts: dropped.
  std::uint64_t NumTooLong() const { return m_numTooLong; }

 private:
  using t_Clock = std::chrono::steady_clock;

  // What the messages of an input have in common.
  struct S_Route {
    std::string subject;  // with the station
    std::string input;
    std::string id;              // up to the offset
    std::string idTail;          // after it
    bool isInOrder = false;      // of their offsets
    bool hasSent = false;        // in this run
    bool mayBePresent = false;   // the stream is to be asked
    std::uint64_t resumeAt = 0;  // offsets below it are in the stream
  };
  struct S_Flight {
    t_Piece piece;
    std::size_t unit;
    S_Route* route;
    bool isDone = false;  // acknowledged, or given up
  };

  t_NatsResult OpenStream();
  t_NatsResult CheckStream(const jsStreamInfo& info);
  S_Route& RouteOf(const S_Piece& piece);
  t_NatsResult LookUp(S_Route& route) const;
  t_NatsResult SendNext();
  natsStatus Publish(const S_Flight& flight, std::uint64_t number);
  const std::string& MessageToken(const std::string& message);
  t_NatsResult TakeAnswers(std::chrono::milliseconds wait);
  t_NatsResult TakeAnswer(natsMsg* answer);
  void Settle(S_Flight& flight);
  void DropTooLong(S_Flight& flight);

  const S_Address m_address;
  const S_PublisherOptions m_options;
  const C_StationNames m_stations;
  const t_SinkCounters m_counters;
  const t_Say m_say;

  C_NatsSession m_session;
  t_NatsSubscription m_answers;
  std::string m_inbox;       // of this connection: acknowledgments come to "INBOX.NUMBER"
  std::size_t m_window = 0;  // of this stream
  t_Clock::time_point m_lastProgress;

  std::deque<S_Flight> m_flights;  // oldest first
  std::uint64_t m_firstNumber = 0;
  std::size_t m_numSent = 0;  // of the flights, over this connection

  std::unordered_map<std::string, std::unique_ptr<S_Route>> m_routes;  // by station, identity and format
  std::unordered_map<std::string, std::string> m_messageTokens;
  std::uint64_t m_numPresent = 0;
  std::uint64_t m_numTooLong = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_PUBLISHER_H
