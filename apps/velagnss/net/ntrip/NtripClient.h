// A reader's connection to a caster: request, answer, and the body of the answer.
#ifndef VELAGNSS_APPS_NTRIP_CLIENT_H
#define VELAGNSS_APPS_NTRIP_CLIENT_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/net/Transport.h"
#include "apps/velagnss/net/ntrip/Answer.h"
#include "apps/velagnss/net/ntrip/ChunkDecoder.h"
#include "apps/velagnss/net/ntrip/HttpHead.h"

namespace Host {

// From the beginning of a connection to the end of the answer's head: a caster that sends a byte now and then does not
// get more.
inline constexpr std::chrono::seconds kAnswerTime{15};

// The transport that an address "ntrip://" or "ntrips://" asks for: its options are `insecure` and `ca=FILE`.
std::unique_ptr<C_Transport> MakeNtripTransport(C_Await& await, const S_Address& address);

// `address` with the usual port where it has none. It is 2101 for both schemes: casters have TLS at many ports, 2101,
// 2102 and 443 among them, and none of them is usual.
S_Address WithNtripPort(S_Address address);

// Sends `head` over a connected transport and reads the answer's head.
S_NtripAnswer AskCaster(C_Transport& transport, std::string_view head, C_HeadParser& parser, C_Await::t_Time deadline);

// Where `from` is moved to by the `location` of an answer. Another scheme is not followed, nor another host or port
// when `from` has an account: it would get the password. Returns an error text, empty when good.
std::string Redirect(const S_Address& from, std::string_view location, S_Address& to);

class C_NtripClient {
 public:
  explicit C_NtripClient(C_Await& await) : m_await(await) {}

  // Asks for the mount that the path of `address` is, or for the source table. User and password have been filled in.
  // Follows what is moved, at most 3 times. `gga`: as ReaderHead (Request.h).
  S_NtripAnswer Get(const S_Address& address, unsigned int version, std::string_view gga);

  const S_HttpHead& Head() const { return m_parser.Head(); }

  // The body without its transfer coding.
  C_Transport::S_Read Read(C_Await::t_Time deadline);

  // Appends the body to `text` until that has `limit` bytes, to the body's end, to the deadline, or until `isEnough`.
  void ReadText(std::string& text, std::size_t limit, C_Await::t_Time deadline,
                const std::function<bool(std::string_view)>& isEnough);

  void Send(std::string_view bytes) {
    if (m_transport) m_transport->Send(bytes);
  }
  void Close() { m_transport.reset(); }

  // Whether what came was not in chunks although the head said so.
  bool HasBadChunks() const { return m_chunks.HasFailed(); }

 private:
  S_NtripAnswer GetOnce(const S_Address& address, unsigned int version, std::string_view gga);
  C_Transport::S_Read Decode(std::span<const unsigned char> bytes);

  C_Await& m_await;
  std::unique_ptr<C_Transport> m_transport;
  C_HeadParser m_parser;
  C_ChunkDecoder m_chunks;
  bool m_hasRest = false;             // of the body, with the head
  std::vector<unsigned char> m_data;  // of the last read
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_CLIENT_H
