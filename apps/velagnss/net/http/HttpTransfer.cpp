#include "apps/velagnss/net/http/HttpTransfer.h"

#include <curl/curl.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using t_Clock = std::chrono::steady_clock;

constexpr long kConnectSeconds = 20;  // for the name, all addresses and TLS together
constexpr long kMaxRedirections = 5;
constexpr auto kLongestPoll = std::chrono::milliseconds(1000);
constexpr long kMaxRetryAfter = 600;

enum class eVerdict { Good, Broken, Refused };

struct S_StatusRow {
  long status;
  eVerdict verdict;
  const char* text;
};
constexpr const char* kRedirects =
    "the server redirects to another scheme, or too often; name the address it redirects to";
// RFC 9110, 15. Redirections are those that were not followed. Of statuses that are not listed, those from 500 on may
// pass.
constexpr S_StatusRow kStatuses[] = {
    {200, eVerdict::Good, ""},
    {206, eVerdict::Good, ""},
    {301, eVerdict::Refused, kRedirects},
    {302, eVerdict::Refused, kRedirects},
    {303, eVerdict::Refused, kRedirects},
    {307, eVerdict::Refused, kRedirects},
    {308, eVerdict::Refused, kRedirects},
    {401, eVerdict::Refused, "the server wants a user and password; give them with --credentials"},
    {403, eVerdict::Refused, "the server does not allow it; check the address and --credentials"},
    {404, eVerdict::Refused, "there is no such file on the server; check the address"},
    {407, eVerdict::Refused, "the proxy wants a user and password"},
    {408, eVerdict::Broken, "the server waited too long for the request"},
    {410, eVerdict::Refused, "the file has been removed from the server"},
    {416, eVerdict::Refused, "the server has fewer bytes than were there before: the file has changed"},
    {425, eVerdict::Broken, "the server is not ready yet"},
    {429, eVerdict::Broken, "the server has too many requests"},
    {503, eVerdict::Broken, "the server is overloaded or being maintained"},
};

// What a second try would not change.
constexpr CURLcode kFinal[] = {
    CURLE_UNSUPPORTED_PROTOCOL, CURLE_URL_MALFORMAT,      CURLE_PEER_FAILED_VERIFICATION,
    CURLE_SSL_CACERT_BADFILE,   CURLE_TOO_MANY_REDIRECTS, CURLE_OUT_OF_MEMORY,
};

// Once for all threads, before the first use.
bool InitializeCurl() {
  static const bool kIsGood = ::curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return kIsGood;
}

// Both handles are void to the compiler.
struct S_FreeEasy {
  void operator()(CURL* easy) const { ::curl_easy_cleanup(easy); }
};
struct S_FreeMulti {
  void operator()(CURLM* multi) const { ::curl_multi_cleanup(multi); }
};

std::string HeaderOf(CURL* easy, const char* name) {
  curl_header* header = nullptr;
  return ::curl_easy_header(easy, name, 0, CURLH_HEADER, -1, &header) == CURLHE_OK ? header->value : "";
}

// "bytes 100-199/1000", "bytes 100-199/*", "bytes */1000" (RFC 9110, 14.4).
struct S_ContentRange {
  std::optional<std::uint64_t> begin;
  std::optional<std::uint64_t> size;
};
S_ContentRange ReadContentRange(std::string_view text) {
  constexpr std::string_view kUnit = "bytes ";
  S_ContentRange range;
  if (!text.starts_with(kUnit)) return range;
  text.remove_prefix(kUnit.size());
  const std::size_t dash = text.find('-');
  const std::size_t slash = text.find('/');
  std::uint64_t number = 0;
  if (dash != std::string_view::npos && ParseWhole(text.substr(0, dash), number)) range.begin = number;
  if (slash != std::string_view::npos && ParseWhole(text.substr(slash + 1), number)) range.size = number;
  return range;
}

}  // namespace

bool S_HttpFile::IsSame(const S_HttpFile& other) const {
  const auto differ = [](const std::string& one, const std::string& two) {
    return !one.empty() && !two.empty() && one != two;
  };
  const bool haveTags = !etag.empty() && !other.etag.empty();
  if (haveTags ? etag != other.etag : differ(modified, other.modified)) return false;
  return !size || !other.size || *size == *other.size;
}

struct C_HttpTransfer::S_Exchange {
  S_Exchange(const S_HttpAddress& address, const S_HttpRange& wanted);
  ~S_Exchange() {
    if (easy != nullptr) ::curl_multi_remove_handle(multi.get(), easy.get());
  }

  static std::size_t Take(char* bytes, std::size_t one, std::size_t count, void* self);
  void Examine();
  void ReadHead();
  S_Read Ended(CURLcode code) const;
  S_Read Broken() const;
  std::optional<CURLcode> Perform();
  void Wait(t_Clock::duration limit) const;

  std::unique_ptr<CURLM, S_FreeMulti> multi;
  std::unique_ptr<CURL, S_FreeEasy> easy;
  S_HttpRange range;
  std::string text;  // of a fault, by libcurl
  std::vector<unsigned char> waiting;
  std::size_t used = 0;  // of these
  std::optional<CURLcode> ended;
  bool isExamined = false;
  S_Read verdict{eState::Bytes};  // of the status and the range
  S_HttpFile file;
  std::uint64_t begin = 0;
};

C_HttpTransfer::S_Exchange::S_Exchange(const S_HttpAddress& address, const S_HttpRange& wanted)
    : multi(InitializeCurl() ? ::curl_multi_init() : nullptr),
      easy(::curl_easy_init()),
      range(wanted),
      text(CURL_ERROR_SIZE, '\0') {
  CURL* const handle = easy.get();
  const std::string scheme = address.url.substr(0, address.url.find(':'));
  ::curl_easy_setopt(handle, CURLOPT_URL, address.url.c_str());
  ::curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  ::curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, scheme.c_str());
  ::curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  ::curl_easy_setopt(handle, CURLOPT_MAXREDIRS, kMaxRedirections);
  ::curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  ::curl_easy_setopt(handle, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
  ::curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  ::curl_easy_setopt(handle, CURLOPT_TCP_KEEPALIVE, 1L);
  ::curl_easy_setopt(handle, CURLOPT_USERAGENT, "velagnss/" VELAGNSS_VERSION);
  ::curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, text.data());
  ::curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &Take);
  ::curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  if (const char* const authorities = std::getenv("SSL_CERT_FILE"))  // as OpenSSL itself has it
    ::curl_easy_setopt(handle, CURLOPT_CAINFO, authorities);
  if (!address.account.user.empty()) {
    ::curl_easy_setopt(handle, CURLOPT_USERNAME, address.account.user.c_str());
    ::curl_easy_setopt(handle, CURLOPT_PASSWORD, address.account.password.c_str());
  }
  if (range.offset > 0 || range.end) {
    const std::string last = range.end ? std::to_string(*range.end - 1) : std::string();
    ::curl_easy_setopt(handle, CURLOPT_RANGE, fmt::format("{}-{}", range.offset, last).c_str());
  }
  ::curl_multi_add_handle(multi.get(), handle);
}

// Bytes that are not wanted end the transfer: an answer of another status is the text of an error page.
std::size_t C_HttpTransfer::S_Exchange::Take(char* bytes, std::size_t one, std::size_t count, void* self) {
  auto& exchange = *static_cast<S_Exchange*>(self);
  exchange.Examine();
  if (exchange.verdict.state != eState::Bytes) return 0;
  const auto* const begin = reinterpret_cast<const unsigned char*>(bytes);
  exchange.waiting.insert(exchange.waiting.end(), begin, begin + one * count);
  return one * count;
}

// The answer to the last request of a chain of redirections, once its head is complete.
void C_HttpTransfer::S_Exchange::Examine() {
  long status = 0;
  ::curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  if (isExamined || status == 0) return;
  isExamined = true;
  const S_StatusRow* const row = std::find_if(std::begin(kStatuses), std::end(kStatuses),
                                              [status](const S_StatusRow& known) { return known.status == status; });
  const bool isKnown = row != std::end(kStatuses);
  const eVerdict verdictOf = isKnown ? row->verdict : status >= 500 ? eVerdict::Broken : eVerdict::Refused;
  ReadHead();
  if (status == 416 && file.size == range.offset) {
    verdict = {eState::End};
  } else if (verdictOf != eVerdict::Good) {
    verdict = Broken();
    verdict.error = isKnown ? row->text : fmt::format("the server answers with status {}", status);
    if (verdictOf == eVerdict::Refused) verdict.state = eState::Refused;
  } else if (status == 206 && begin != range.offset) {
    verdict = {eState::Refused, 0, "the server sends another range than the one that was asked for"};
  }
}

void C_HttpTransfer::S_Exchange::ReadHead() {
  const S_ContentRange part = ReadContentRange(HeaderOf(easy.get(), "Content-Range"));
  long status = 0;
  curl_off_t length = -1;
  ::curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  ::curl_easy_getinfo(easy.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  file = {HeaderOf(easy.get(), "ETag"), HeaderOf(easy.get(), "Last-Modified"), part.size};
  if (status == 200 && length >= 0) file.size = static_cast<std::uint64_t>(length);
  if (status == 206) begin = part.begin.value_or(~range.offset);
}

C_HttpTransfer::S_Read C_HttpTransfer::S_Exchange::Broken() const {
  curl_off_t seconds = 0;
  ::curl_easy_getinfo(easy.get(), CURLINFO_RETRY_AFTER, &seconds);
  S_Read read{eState::Broken};
  if (seconds > 0) read.retryAfter = std::chrono::seconds(std::min<curl_off_t>(seconds, kMaxRetryAfter));
  return read;
}

C_HttpTransfer::S_Read C_HttpTransfer::S_Exchange::Ended(CURLcode code) const {
  if (verdict.state != eState::Bytes) return verdict;
  if (code == CURLE_OK) return {eState::End};
  const bool isFinal = std::find(std::begin(kFinal), std::end(kFinal), code) != std::end(kFinal);
  return {isFinal ? eState::Refused : eState::Broken, 0, text[0] != '\0' ? text.c_str() : ::curl_easy_strerror(code)};
}

// Sends and receives what can be at once; the code of the transfer once it has ended.
std::optional<CURLcode> C_HttpTransfer::S_Exchange::Perform() {
  int running = 0;
  ::curl_multi_perform(multi.get(), &running);
  int left = 0;
  const CURLMsg* const message = ::curl_multi_info_read(multi.get(), &left);
  if (message == nullptr || message->msg != CURLMSG_DONE) return std::nullopt;
  Examine();
  return message->data.result;
}

void C_HttpTransfer::S_Exchange::Wait(t_Clock::duration limit) const {
  curl_waitfd signal{SignalDescriptor(), CURL_WAIT_POLLIN, 0};
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(limit).count();
  ::curl_multi_poll(multi.get(), &signal, signal.fd >= 0 ? 1 : 0,
                    static_cast<int>(std::max<std::int64_t>(milliseconds, 0)), nullptr);
}

C_HttpTransfer::C_HttpTransfer(const S_HttpAddress& address, const S_HttpRange& range)
    : m_exchange(std::make_unique<S_Exchange>(address, range)) {}

C_HttpTransfer::~C_HttpTransfer() = default;

const S_HttpFile& C_HttpTransfer::File() const { return m_exchange->file; }

std::uint64_t C_HttpTransfer::Begin() const { return m_exchange->begin; }

// What has come before a fault is delivered before it.
C_HttpTransfer::S_Read C_HttpTransfer::Read(std::span<unsigned char> buffer, std::chrono::milliseconds limit) {
  S_Exchange& exchange = *m_exchange;
  const t_Clock::time_point end = t_Clock::now() + limit;
  while (exchange.used == exchange.waiting.size()) {
    exchange.waiting.clear();
    exchange.used = 0;
    if (!exchange.ended) exchange.ended = exchange.Perform();
    if (!exchange.waiting.empty()) break;
    if (exchange.ended) return exchange.Ended(*exchange.ended);
    if (SignalReceived() != 0) return {eState::Interrupted};
    if (t_Clock::now() >= end)
      return {eState::Broken, 0,
              fmt::format("no data for {} s", std::chrono::ceil<std::chrono::seconds>(limit).count())};
    exchange.Wait(std::min<t_Clock::duration>(end - t_Clock::now(), kLongestPoll));
  }
  const std::size_t size = std::min(buffer.size(), exchange.waiting.size() - exchange.used);
  std::memcpy(buffer.data(), exchange.waiting.data() + exchange.used, size);
  exchange.used += size;
  return {eState::Bytes, size};
}

}  // namespace Host
