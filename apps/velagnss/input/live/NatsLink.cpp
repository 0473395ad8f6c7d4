#include "apps/velagnss/input/live/NatsLink.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "apps/velagnss/net/nats/NatsAddress.h"
#include "apps/velagnss/net/nats/NatsSession.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/TimeRead.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eFailure = S_LinkFailure::eKind;

constexpr auto kLook = 100ms;                       // after the end of the program
constexpr std::size_t kEnoughBytes = 1 << 15;       // for one read
constexpr std::int64_t kHeartbeat = 5'000'000'000;  // ns; without two of them the connection counts as lost
constexpr auto kIdHeader = "Nats-Msg-Id";

constexpr std::uint64_t kNoEnd = std::numeric_limits<std::uint64_t>::max();

// Nanoseconds since 1970, of which servers know those from 1 to the last that 64 bits can hold, in 2262.
std::optional<std::int64_t> ReadTime(const std::string& text) {
  constexpr std::int64_t kMjdOf1970 = 40'587;
  const std::optional<S_UtcTime> time = ParseUtc(text);
  if (!time || !time->mjd) return std::nullopt;
  const std::int64_t microseconds = (std::int64_t{*time->mjd} - kMjdOf1970) * kMicrosecondsPerDay + time->ofDay;
  if (microseconds <= 0 || microseconds > std::numeric_limits<std::int64_t>::max() / 1'000) return std::nullopt;
  return microseconds * 1'000;
}

bool IsFrom(const std::string& value) {
  std::uint64_t sequence = 0;
  if (value == "start" || value == "new" || ReadTime(value)) return true;
  return ParseWhole(value, sequence) && sequence > 0 && sequence < kNoEnd;
}
bool IsUntil(const std::string& value) { return value == "end"; }
bool IsSubject(const std::string& value) {
  if (value.empty() || value.size() >= 256 || value.find_first_of(" \t") != std::string::npos) return false;
  if (value.starts_with('.') || value.ends_with('.') || value.find("..") != std::string::npos) return false;
  return value.find(">.") == std::string::npos;
}

S_LinkFailure FailureOf(const S_NatsFailure& failure) {
  return {failure.kind == S_NatsFailure::eKind::Lost ? eFailure::Lost : eFailure::Refused, failure.text, {}};
}

// The place in the stream is kept from one connection to the next, so that nothing is lost or comes twice. The server
// numbers what it delivers: a number left out ends the connection, too.
class C_NatsLink : public C_Link {
 public:
  C_NatsLink(const S_Address& address, const S_LiveOptions& options, C_Await& await)
      : m_address(address), m_credentials(options.credentials), m_await(await) {}

  std::optional<S_LinkFailure> Open() override;
  S_Read Read(C_Await::t_Time deadline) override;
  void Close() override {
    m_subscription.reset();
    m_session.Close();
  }
  std::string Peer() const override { return m_session.Peer(); }

 private:
  t_NatsResult Subscribe();
  void ChooseStart(const jsStreamState& state);
  void ChoosePlace(const jsStreamInfo& info);
  t_NatsResult IsAtEnd(bool& isAtEnd);
  std::string Subject() const;
  S_Read Fetch(std::int64_t wait);
  std::optional<S_LinkFailure> Take(natsMsg* message);

  const S_Address m_address;
  const std::string m_credentials;
  C_Await& m_await;
  C_NatsSession m_session;
  t_NatsSubscription m_subscription;
  std::vector<unsigned char> m_bytes;

  std::uint64_t m_next = 0;            // sequence number; 0: by the time
  std::optional<std::int64_t> m_from;  // nanoseconds since 1970
  bool m_hasEnd = false;
  std::uint64_t m_end = kNoEnd;  // the last one that is wanted
  bool m_isPlaced = false;
  bool m_hasRead = false;
  std::int64_t m_created = 0;     // when the stream was; another time is another stream
  std::uint64_t m_delivered = 0;  // messages of this subscription
};

std::optional<S_LinkFailure> C_NatsLink::Open() {
  t_NatsResult result = m_session.Open(m_address, {.credentials = m_credentials});
  if (!result) result = Subscribe();
  bool isAtEnd = false;
  if (!result && m_hasEnd) result = IsAtEnd(isAtEnd);
  if (result || isAtEnd) Close();
  if (isAtEnd) return S_LinkFailure{eFailure::Ended, {}, {}};
  return result ? std::optional(FailureOf(*result)) : std::nullopt;
}

t_NatsResult C_NatsLink::Subscribe() {
  const std::string stream = StreamOf(m_address);
  jsStreamConfig config;
  jsStreamConfig_Init(&config);
  config.Name = stream.c_str();
  t_StreamInfo info;
  if (t_NatsResult result = m_session.OpenStream(config, false, info)) return result;
  ChoosePlace(*info);
  jsSubOptions options;
  jsSubOptions_Init(&options);
  options.Stream = stream.c_str();
  options.Config.AckPolicy = js_AckNone;
  options.Config.FlowControl = true;
  options.Config.Heartbeat = kHeartbeat;
  options.Config.DeliverPolicy = m_next > 0 ? js_DeliverByStartSequence : js_DeliverByStartTime;
  options.Config.OptStartSeq = m_next;
  options.Config.OptStartTime = m_next > 0 ? 0 : m_from.value_or(0);
  m_delivered = 0;
  jsErrCode code{};
  const natsStatus status = NatsMake(m_subscription, [&](natsSubscription** made) {
    return js_SubscribeSync(made, m_session.JetStream(), Subject().c_str(), nullptr, &options, &code);
  });
  return NatsResult(status, code);
}

// Where a new source begins. "new" is a place, too: after a loss the source goes on from it.
void C_NatsLink::ChooseStart(const jsStreamState& state) {
  const std::string from = NatsOption(m_address, "from");
  m_isPlaced = true;
  m_hasEnd = m_address.options.contains("until");
  if (from == "start") m_next = 1;
  if (from.empty() || from == "new") m_next = state.LastSeq + 1;
  if (m_next > 0) return;
  m_from = ReadTime(from);
  if (!m_from) ParseWhole(from, m_next);
}

void C_NatsLink::ChoosePlace(const jsStreamInfo& info) {
  const jsStreamState& state = info.State;
  const bool isAnew = std::exchange(m_created, info.Created) != info.Created;
  if (!m_isPlaced) return ChooseStart(state);
  if (m_next == 0) return;
  if (isAnew) {
    Notify("the stream has been made anew; it is read from its start");
    m_next = 1;
  } else if (m_hasRead && m_next > state.LastSeq + 1) {
    Notify(fmt::format("the server has lost messages {} to {}", state.LastSeq + 1, m_next - 1));
    m_next = state.LastSeq + 1;
  } else if (m_next < state.FirstSeq && state.FirstSeq > 1) {
    Notify(fmt::format("messages {} to {} have been deleted from the stream meanwhile", m_next, state.FirstSeq - 1));
  }
}

std::string C_NatsLink::Subject() const {
  const std::string subject = NatsOption(m_address, "subject");
  return subject.empty() ? ">" : subject;
}

// Whether there is nothing to come before the end that is wanted: the last message of the subject when this was asked
// first, or an earlier one if that has been deleted since. The number of messages that the server says are still to
// come can reach 0 too early.
t_NatsResult C_NatsLink::IsAtEnd(bool& isAtEnd) {
  t_NatsMessage last;
  jsErrCode code{};
  const natsStatus status = NatsMake(last, [&](natsMsg** made) {
    return js_GetLastMsg(made, m_session.JetStream(), StreamOf(m_address).c_str(), Subject().c_str(), nullptr, &code);
  });
  const bool isEmpty = code == JSNoMessageFoundErr || status == NATS_NOT_FOUND;
  if (status != NATS_OK && !isEmpty) return NatsResult(status, code);
  m_end = isEmpty ? 0 : std::min(m_end, natsMsg_GetSequence(last.get()));
  isAtEnd = m_next > m_end || m_end == 0 || (m_next == 0 && natsMsg_GetTime(last.get()) < m_from.value_or(0));
  return std::nullopt;
}

C_Link::S_Read C_NatsLink::Read(C_Await::t_Time deadline) {
  while (!m_await.IsStopping()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - C_Await::t_Clock::now());
    S_Read read = Fetch(std::clamp<std::int64_t>(left.count(), 0, std::chrono::milliseconds(kLook).count()));
    bool isAtEnd = false;
    if (m_hasEnd && read.bytes.empty() && !read.failure && !IsAtEnd(isAtEnd) && isAtEnd)
      read.failure = S_LinkFailure{eFailure::Ended, {}, {}};
    if (!read.bytes.empty() || read.failure || left.count() <= 0) return read;
  }
  return {};
}

// Waits for the first message only. A failure is reported after the bytes that came before it.
C_Link::S_Read C_NatsLink::Fetch(std::int64_t wait) {
  m_bytes.clear();
  std::optional<S_LinkFailure> failure;
  while (!failure && m_bytes.size() < kEnoughBytes) {
    t_NatsMessage message;
    const natsStatus status =
        NatsMake(message, [&](natsMsg** made) { return natsSubscription_NextMsg(made, m_subscription.get(), wait); });
    if (status == NATS_TIMEOUT) break;
    failure = status == NATS_OK ? Take(message.get()) : std::optional(FailureOf(*NatsResult(status)));
    wait = 0;
  }
  return {m_bytes, failure};
}

std::optional<S_LinkFailure> C_NatsLink::Take(natsMsg* message) {
  t_MessageMetaData place;
  if (const natsStatus status =
          NatsMake(place, [message](jsMsgMetaData** made) { return natsMsg_GetMetaData(made, message); });
      status != NATS_OK)
    return FailureOf(*NatsResult(status));
  if (place->Sequence.Consumer != ++m_delivered) return S_LinkFailure::Lost("messages were lost on the way");
  const S_LinkFailure ended{eFailure::Ended, {}, {}};
  if (place->Sequence.Stream > m_end) return ended;
  const char* text = nullptr;
  const std::string_view id = natsMsgHeader_Get(message, kIdHeader, &text) == NATS_OK ? text : "";
  if (id.ends_with(":json") || id.ends_with(":epochs"))
    return S_LinkFailure::Final(fmt::format(
        "{} holds JSON, which cannot be decoded again; a stream of frames can, and subject= chooses among subjects",
        natsMsg_GetSubject(message)));
  const char* const data = natsMsg_GetData(message);
  m_bytes.insert(m_bytes.end(), data, data + natsMsg_GetDataLength(message));
  m_next = place->Sequence.Stream + 1;
  m_hasRead = true;
  return m_next > m_end ? std::optional(ended) : std::nullopt;
}

const auto kNatsSourceOptions = WithNatsOptions(std::array<S_AddressOption, 3>{{
    {"subject", "a subject, which may have the wildcards '*' and, at its end, '>'", &IsSubject},
    {"from", "start, new, the number of a message, or a UTC time such as 2024-05-18T12:00:00", &IsFrom},
    {"until", "end", &IsUntil},
}});

std::unique_ptr<C_Link> MakeNatsLink(const S_Address& address, const S_LiveOptions& options, C_Await& await) {
  return std::make_unique<C_NatsLink>(address, options, await);
}

}  // namespace

const S_LinkKind kNatsLink = {NatsForm("nats", "nats://USER@HOST:PORT/STREAM", kNatsSourceOptions), &MakeNatsLink};
const S_LinkKind kNatsTlsLink = {NatsForm("natss", "natss://USER@HOST:PORT/STREAM", kNatsSourceOptions), &MakeNatsLink};

}  // namespace Host
