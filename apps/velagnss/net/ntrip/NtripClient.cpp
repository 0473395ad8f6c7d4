#include "apps/velagnss/net/ntrip/NtripClient.h"

#include <algorithm>

#include "apps/velagnss/net/ntrip/Request.h"

namespace Host {
namespace {

using eKind = S_NtripAnswer::eKind;

S_NtripAnswer Lost(std::string text) { return {eKind::Lost, std::move(text), {}, false}; }

// Why no whole head came.
S_NtripAnswer WithoutHead(const C_HeadParser& parser, const C_Transport::S_Read& read) {
  if (!read.error.empty()) return Lost(read.error);
  if (read.hasEnded && parser.IsEmpty())
    return Lost("closed without an answer: perhaps this address is banned, or the port is another one or wants TLS");
  if (read.hasEnded) return Lost("closed within the head of the answer");
  return Lost(parser.IsEmpty() ? "no answer in time" : "the head of the answer did not end in time");
}

}  // namespace

S_NtripAnswer AskCaster(C_Transport& transport, std::string_view head, C_HeadParser& parser, C_Await::t_Time deadline) {
  constexpr auto kUndecided = std::chrono::seconds(1);
  transport.Send(head);
  while (parser.State() == C_HeadParser::eState::Incomplete) {
    const bool mayEnd = parser.MayEndHere();
    const C_Await::t_Time until = C_Await::t_Clock::now() + kUndecided;
    const C_Transport::S_Read read = transport.Read(mayEnd ? std::min(until, deadline) : deadline);
    if (!read.bytes.empty())
      parser.Take(read.bytes);
    else if (mayEnd)
      parser.EndHere();
    else
      return WithoutHead(parser, read);
  }
  if (parser.State() == C_HeadParser::eState::Bad) return {eKind::Refused, parser.Error(), kRefusalPause, false};
  return MeaningOf(parser.Head(), std::chrono::system_clock::now());
}

S_NtripAnswer C_NtripClient::Get(const S_Address& address, unsigned int version, std::string_view gga) {
  constexpr int kMostMoves = 3;
  S_Address place = WithNtripPort(address);
  for (int moves = 0; moves <= kMostMoves; ++moves) {
    S_NtripAnswer answer = GetOnce(place, version, gga);
    if (answer.kind != eKind::Moved) return answer;
    S_Address next;
    const std::string error = Redirect(place, answer.text, next);
    if (!error.empty()) return {eKind::Refused, error, kRefusalPause, false};
    place = next;
  }
  return {eKind::Refused, "moved from place to place, more than 3 times", kRefusalPause, false};
}

S_NtripAnswer C_NtripClient::GetOnce(const S_Address& address, unsigned int version, std::string_view gga) {
  const std::string mount(MountOf(address));
  if (const std::string error = CheckMount(mount); !error.empty()) return {eKind::Refused, error, kRefusalPause, false};
  const C_Await::t_Time deadline = C_Await::t_Clock::now() + kAnswerTime;
  m_parser = {};
  m_chunks = {};
  m_transport = MakeNtripTransport(m_await, address);
  if (std::string error = m_transport->Connect(address.host, address.port, deadline); !error.empty())
    return Lost(std::move(error));
  const std::string head = ReaderHead({version, address.HostAndPort(), mount, address.user, address.password}, gga);
  S_NtripAnswer answer = AskCaster(*m_transport, head, m_parser, deadline);
  m_hasRest = true;
  return answer;
}

C_Transport::S_Read C_NtripClient::Read(C_Await::t_Time deadline) {
  if (!m_transport) return {{}, false, "not connected"};
  if (m_hasRest) {
    m_hasRest = false;
    const std::string_view rest = m_parser.Body();
    if (!rest.empty()) return Decode({reinterpret_cast<const unsigned char*>(rest.data()), rest.size()});
  }
  if (m_chunks.HasEnded() || m_chunks.HasFailed()) return Decode({});
  const C_Transport::S_Read read = m_transport->Read(deadline);
  return read.bytes.empty() ? read : Decode(read.bytes);
}

// A piece may hold only the size of a chunk: then nothing has come yet. Data before the end or a failure is given
// first.
C_Transport::S_Read C_NtripClient::Decode(std::span<const unsigned char> bytes) {
  if (!Head().IsChunked()) return {bytes, false, {}};
  m_data.clear();
  m_chunks.Decode(bytes, m_data);
  if (!m_data.empty()) return {m_data, false, {}};
  return {{}, m_chunks.HasEnded(), m_chunks.HasFailed() ? "the chunks of the stream are damaged" : ""};
}

void C_NtripClient::ReadText(std::string& text, std::size_t limit, C_Await::t_Time deadline,
                             const std::function<bool(std::string_view)>& isEnough) {
  while (text.size() < limit && !isEnough(text) && C_Await::t_Clock::now() < deadline && !m_await.IsStopping()) {
    const C_Transport::S_Read read = Read(deadline);
    if (read.hasEnded || !read.error.empty()) break;
    text.append(reinterpret_cast<const char*>(read.bytes.data()), read.bytes.size());
  }
  text.resize(std::min(text.size(), limit));
}

}  // namespace Host
