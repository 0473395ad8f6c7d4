#include "apps/velagnss/sinks/nats/NatsPublisher.h"

#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "apps/velagnss/net/nats/NatsAddress.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/TimeText.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eFailure = S_NatsFailure::eKind;

constexpr std::string_view kFrames = "frames";
constexpr std::string_view kEpochs = "epochs";

constexpr const char* kIdHeader = "Nats-Msg-Id";
constexpr const char* kInputHeader = "Gnss-Input";
constexpr const char* kOffsetHeader = "Gnss-Offset";
constexpr const char* kArrivalHeader = "Gnss-Arrival";

// A server keeps something in memory for each subject, and a hostile stream can have a new name in every sentence.
constexpr std::size_t kMaxMessageNames = 2'000;
const std::string kOtherMessage = "other";

// Whether `subjects`, which may have wildcards, take all that `subject` does, which may end with one.
bool Takes(std::string_view subjects, std::string_view subject) {
  const auto cut = [](std::string_view& text) {
    const std::string_view token = text.substr(0, text.find('.'));
    text.remove_prefix(std::min(token.size() + 1, text.size()));
    return token;
  };
  while (!subjects.empty() && !subject.empty()) {
    const std::string_view pattern = cut(subjects);
    const std::string_view token = cut(subject);
    if (pattern == ">") return true;
    if (token == ">" || (pattern != "*" && pattern != token)) return false;
  }
  return subjects.empty() && subject.empty();
}

std::vector<std::string_view> SubjectsOf(const jsStreamInfo& info) {
  const jsStreamConfig& config = *info.Config;
  return {config.Subjects, config.Subjects + config.SubjectsLen};
}

// What the server says of a message.
struct S_Answer {
  bool isDuplicate = false;
  std::optional<S_NatsFailure> failure = {};
  bool isTooLong = false;
};

// {"error":{"code":503,"err_code":10077,"description":"maximum messages exceeded"},"stream":"gnss","seq":0}
S_Answer ReadError(std::string_view text) {
  const S_NatsFailure unreadable{eFailure::Lost, "the server gave an answer that cannot be read"};
  simdjson::dom::parser parser;
  simdjson::dom::element document;
  std::int64_t code = 0;
  std::string_view description;
  if (parser.parse(text.data(), text.size()).get(document) != simdjson::SUCCESS) return {false, unreadable};
  if (document["error"]["err_code"].get(code) != simdjson::SUCCESS) return {false, unreadable};
  if (document["error"]["description"].get(description) != simdjson::SUCCESS) description = {};
  const jsErrCode error{static_cast<jsErrCode>(code)};
  return {false, ServerFailure(error, std::string(description)), error == JSStreamMessageExceedsMaximumErr};
}

// {"stream":"gnss", "seq":7,"duplicate": true}
S_Answer ReadAnswer(std::string_view text) {
  if (text.find("\"error\"") != std::string_view::npos) return ReadError(text);
  return {text.find("\"duplicate\"") != std::string_view::npos};
}

// The offset in an id "STATION/IDENTITY:OFFSET", after which the format may follow.
std::optional<std::uint64_t> OffsetIn(std::string_view id, std::string_view head, std::string_view tail) {
  std::uint64_t offset = 0;
  if (!id.starts_with(head) || !id.ends_with(tail) || id.size() < head.size() + tail.size()) return std::nullopt;
  if (!ParseWhole(id.substr(head.size(), id.size() - head.size() - tail.size()), offset)) return std::nullopt;
  return offset;
}

// Without the line's end.
std::string_view DataOf(const S_Piece& piece, std::size_t unit) {
  std::string_view data = piece.Unit(unit);
  if (piece.format != kFrames && data.ends_with('\n')) data.remove_suffix(1);
  return data;
}

}  // namespace

C_NatsPublisher::C_NatsPublisher(S_Address address, S_PublisherOptions options, C_StationNames stations,
                                 t_SinkCounters counters, t_Say say)
    : m_address(std::move(address)),
      m_options(std::move(options)),
      m_stations(std::move(stations)),
      m_counters(std::move(counters)),
      m_say(std::move(say)) {}

t_NatsResult C_NatsPublisher::Open() {
  t_NatsResult result = m_session.Open(m_address, {.credentials = m_options.credentials});
  if (!result) result = OpenStream();
  t_NatsHandle<natsInbox, &natsInbox_Destroy> inbox;
  if (!result) result = NatsResult(NatsMake(inbox, &natsInbox_Create));
  if (!result) {
    m_inbox = inbox.get() + std::string(".");
    result = NatsResult(NatsMake(m_answers, [this](natsSubscription** made) {
      return natsConnection_SubscribeSync(made, m_session.Connection(), (m_inbox + "*").c_str());
    }));
  }
  if (result) Close();
  return result;
}

// A server that is away for longer than it remembers ids would store again what it has stored before.
void C_NatsPublisher::Close() {
  for (std::size_t i = 0; i < m_numSent; ++i) m_flights[i].route->mayBePresent = m_flights[i].route->isInOrder;
  m_answers.reset();
  m_session.Close();
  m_numSent = 0;
}

t_NatsResult C_NatsPublisher::OpenStream() {
  const std::string name = StreamOf(m_address);
  const std::string subjects = m_options.prefix + ".>";
  std::array<const char*, 1> all{subjects.c_str()};
  jsStreamConfig config;
  jsStreamConfig_Init(&config);
  config.Name = name.c_str();
  config.Subjects = all.data();
  config.SubjectsLen = 1;
  config.Duplicates = m_options.duplicates * 1'000'000'000;
  config.Replicas = m_options.replicas;
  t_StreamInfo info;
  const t_NatsResult result = m_session.OpenStream(config, m_options.creates, info);
  return result ? result : CheckStream(*info);
}

t_NatsResult C_NatsPublisher::CheckStream(const jsStreamInfo& info) {
  const std::vector<std::string_view> subjects = SubjectsOf(info);
  if (std::ranges::none_of(subjects, [this](auto pattern) { return Takes(pattern, m_options.prefix + ".>"); }))
    return S_NatsFailure{
        eFailure::Refused,
        fmt::format("the stream takes {}, not {}.>; choose another prefix= or stream",
                    subjects.empty() ? "no subjects" : fmt::format("{}", fmt::join(subjects, ", ")), m_options.prefix)};
  if (info.Config->NoAck)
    return S_NatsFailure{eFailure::Refused, "the stream acknowledges nothing (no_ack): what is stored cannot be known"};
  const bool mayRefuse = info.Config->Discard == js_DiscardNew;
  m_window = mayRefuse ? 1 : m_options.window;
  if (mayRefuse)
    m_say("the stream refuses messages when it is full (discard new): one at a time is sent, so that order is kept");
  return std::nullopt;
}

void C_NatsPublisher::Add(const t_Piece& piece) {
  S_Route& route = RouteOf(*piece);
  for (std::size_t unit = 0; unit < piece->ends.size(); ++unit) m_flights.push_back({piece, unit, &route});
}

C_NatsPublisher::S_Route& C_NatsPublisher::RouteOf(const S_Piece& piece) {
  // Two stations may send the same bytes.
  const std::string station = m_stations.NameOf(piece.input->name);
  const std::string key = fmt::format("{}/{}:{}", station, piece.input->identity, piece.format);
  std::unique_ptr<S_Route>& route = m_routes[key];
  if (route != nullptr) return *route;
  // Of a regular file it is the same in each run; of other inputs it ends with the time that this run began.
  std::string identity = piece.input->identity;
  const std::size_t time = identity.rfind('@');
  const bool isLive = time != std::string::npos;
  if (isLive && !m_options.session.empty()) identity = identity.substr(0, time + 1) + m_options.session;
  const bool isStable = !isLive || !m_options.session.empty();
  // Epochs that overlap are complete in another order than they begin.
  const bool isInOrder = m_options.resumes && piece.format != kEpochs;
  route = std::make_unique<S_Route>(S_Route{.subject = fmt::format("{}.{}", m_options.prefix, station),
                                            .input = piece.input->name,
                                            .id = fmt::format("{}/{}:", station, identity),
                                            .idTail = piece.format == kFrames ? "" : fmt::format(":{}", piece.format),
                                            .isInOrder = isInOrder,
                                            .mayBePresent = isInOrder && isStable});
  return *route;
}

// Messages of a station are stored in the order of their offsets, so the last one says which are there. The server's
// own check for duplicates looks back only some minutes.
t_NatsResult C_NatsPublisher::LookUp(S_Route& route) const {
  jsErrCode code{};
  t_NatsMessage last;
  const natsStatus status = NatsMake(last, [&](natsMsg** made) {
    return js_GetLastMsg(made, m_session.JetStream(), StreamOf(m_address).c_str(), (route.subject + ".>").c_str(),
                         nullptr, &code);
  });
  if (status != NATS_OK && code != JSNoMessageFoundErr && status != NATS_NOT_FOUND) return NatsResult(status, code);
  const char* id = nullptr;
  if (status == NATS_OK && natsMsgHeader_Get(last.get(), kIdHeader, &id) == NATS_OK)
    if (const auto offset = OffsetIn(id, route.id, route.idTail)) {
      const bool isFirst = std::exchange(route.resumeAt, *offset + 1) == 0 && !route.hasSent;
      if (isFirst)
        m_say(fmt::format("{}: the stream has it up to offset {}; what follows is added", route.input, *offset));
    }
  route.mayBePresent = false;
  return std::nullopt;
}

t_NatsResult C_NatsPublisher::Pump(std::chrono::milliseconds wait) {
  if (m_numSent == 0) m_lastProgress = t_Clock::now();
  while (m_numSent < std::min(m_flights.size(), m_window))
    if (t_NatsResult result = SendNext()) return result;
  if (m_numSent == 0) return std::nullopt;
  if (t_NatsResult result = TakeAnswers(wait)) return result;
  // The only sign of a subject that the account must not publish to; there is no acknowledgment.
  const char* text = nullptr;
  if (m_numSent > 0 && natsConnection_GetLastError(m_session.Connection(), &text) == NATS_NOT_PERMITTED)
    return NatsResult(NATS_NOT_PERMITTED);
  if (m_numSent > 0 && t_Clock::now() - m_lastProgress > m_options.stall)
    return S_NatsFailure{eFailure::Lost, fmt::format("no acknowledgment for {} s", m_options.stall / 1s)};
  return std::nullopt;
}

t_NatsResult C_NatsPublisher::SendNext() {
  S_Flight& flight = m_flights[m_numSent];
  S_Route& route = *flight.route;
  if (route.mayBePresent)
    if (t_NatsResult result = LookUp(route)) return result;
  const bool isPresent = flight.piece->origins[flight.unit].offset < route.resumeAt;
  const std::uint64_t number = m_firstNumber + m_numSent++;
  if (isPresent && !flight.isDone) ++m_numPresent;
  if (isPresent || flight.isDone) {
    Settle(flight);
    return std::nullopt;
  }
  route.hasSent = true;
  const natsStatus status = Publish(flight, number);
  if (status != NATS_MAX_PAYLOAD) return NatsResult(status);
  DropTooLong(flight);  // known without asking the server
  return std::nullopt;
}

const std::string& C_NatsPublisher::MessageToken(const std::string& message) {
  const auto known = m_messageTokens.find(message);
  if (known != m_messageTokens.end()) return known->second;
  if (m_messageTokens.size() >= kMaxMessageNames) return kOtherMessage;
  return m_messageTokens[message] = SubjectToken(message);
}

natsStatus C_NatsPublisher::Publish(const S_Flight& flight, std::uint64_t number) {
  const S_Route& route = *flight.route;
  const S_UnitOrigin& origin = flight.piece->origins[flight.unit];
  const std::string_view data = DataOf(*flight.piece, flight.unit);
  const std::string subject =
      fmt::format("{}.{}.{}", route.subject, SubjectToken(origin.protocol), MessageToken(origin.message));
  t_NatsMessage message;
  natsStatus status = NatsMake(message, [&](natsMsg** made) {
    return natsMsg_Create(made, subject.c_str(), (m_inbox + std::to_string(number)).c_str(), data.data(),
                          static_cast<int>(data.size()));
  });
  const auto set = [&](const char* name, const std::string& value) {
    if (status == NATS_OK) status = natsMsgHeader_Set(message.get(), name, value.c_str());
  };
  set(kIdHeader, fmt::format("{}{}{}", route.id, origin.offset, route.idTail));
  set(kInputHeader, route.input);
  set(kOffsetHeader, std::to_string(origin.offset));
  if (origin.arrival) set(kArrivalHeader, std::string(C_TimeText::OfMachine(*origin.arrival).Text()));
  if (status == NATS_OK) status = natsConnection_PublishMsg(m_session.Connection(), message.get());
  return status;
}

t_NatsResult C_NatsPublisher::TakeAnswers(std::chrono::milliseconds wait) {
  for (std::int64_t limit = wait.count(); m_numSent > 0; limit = 0) {
    t_NatsMessage answer;
    const natsStatus status =
        NatsMake(answer, [&](natsMsg** made) { return natsSubscription_NextMsg(made, m_answers.get(), limit); });
    if (status == NATS_TIMEOUT) break;
    t_NatsResult result = status == NATS_OK ? TakeAnswer(answer.get()) : NatsResult(status);
    if (result) return result;
    m_lastProgress = t_Clock::now();
  }
  return std::nullopt;
}

t_NatsResult C_NatsPublisher::TakeAnswer(natsMsg* message) {
  std::uint64_t number = 0;
  const std::string_view subject = natsMsg_GetSubject(message);
  if (!ParseWhole(subject.substr(std::min(m_inbox.size(), subject.size())), number)) return std::nullopt;
  // Of a message that is settled already, the number is below the first.
  if (number < m_firstNumber || number >= m_firstNumber + m_numSent) return std::nullopt;
  S_Flight& flight = m_flights[number - m_firstNumber];
  const S_Answer answer =
      ReadAnswer({natsMsg_GetData(message), static_cast<std::size_t>(natsMsg_GetDataLength(message))});
  if (answer.isTooLong) {
    DropTooLong(flight);
    return std::nullopt;
  }
  if (answer.failure || flight.isDone) return answer.failure;
  if (answer.isDuplicate) {
    ++m_numPresent;
  } else {
    ++m_counters->units;
    m_counters->bytes += DataOf(*flight.piece, flight.unit).size();
  }
  Settle(flight);
  return std::nullopt;
}

// The acknowledgments of a server come in the order of the messages; if others do not, the oldest missing one counts.
void C_NatsPublisher::Settle(S_Flight& flight) {
  flight.isDone = true;
  while (m_numSent > 0 && m_flights.front().isDone) {
    m_flights.pop_front();
    ++m_firstNumber;
    --m_numSent;
    --m_counters->waiting;
  }
}

void C_NatsPublisher::DropTooLong(S_Flight& flight) {
  if (flight.isDone) return;
  const S_UnitOrigin& origin = flight.piece->origins[flight.unit];
  if (m_numTooLong++ == 0)
    m_say(
        fmt::format("{} of {} bytes at offset {} of {} is longer than the server or the stream accepts; it is dropped",
                    origin.message, DataOf(*flight.piece, flight.unit).size(), origin.offset, flight.route->input));
  ++m_counters->dropped;
  Settle(flight);
}

}  // namespace Host
