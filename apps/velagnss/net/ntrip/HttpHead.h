// Heads of HTTP and of NTRIP, versions 1 and 2: the first line and the fields after it, of answers and of requests.
//
// Real casters take liberties with both versions. A head is read as it comes, in any pieces; whatever is not text
// within the limits below is refused.
#ifndef VELAGNSS_APPS_HTTP_HEAD_H
#define VELAGNSS_APPS_HTTP_HEAD_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Host {

inline constexpr std::size_t kMaxHead = std::size_t{16} * 1024;
inline constexpr std::size_t kMaxHeadLine = std::size_t{8} * 1024;
inline constexpr std::size_t kMaxHeadLines = 100;

struct S_HttpHead {
  // What the first line is.
  enum class eKind {
    Http,     // "HTTP/1.1 200 OK"
    Icy,      // "ICY 200 OK", or "OK" alone: version 1, a stream follows, or a pusher may begin
    Table,    // "SOURCETABLE 200 OK": version 1, a source table follows
    Error,    // "ERROR - Bad Password": version 1, no fields follow
    Request,  // "GET /MOUNT HTTP/1.1", or another method of HTTP
    Source,   // "SOURCE password /MOUNT": a pusher of version 1
    Page,     // "<html>": a page without a head; all of it belongs to the body
  };

  eKind kind = eKind::Http;
  std::string firstLine;                                         // without its end
  unsigned int code = 0;                                         // of an answer; 0 where it has none
  bool isHttp10 = false;                                         // HTTP/1.0 rather than a later version
  std::vector<std::pair<std::string, std::string>> fields = {};  // names in lower case, values without blanks around

  // The value of the first field of this name, which is in lower case; empty when there is none.
  std::string_view Field(std::string_view name) const;

  // Whether the body is cut into chunks (ChunkDecoder.h).
  bool IsChunked() const;
};

// The words of a line, separated by any number of blanks.
std::vector<std::string_view> WordsOf(std::string_view line);

// ASCII only.
std::string InLowerCase(std::string_view text);

class C_HeadParser {
 public:
  enum class eState { Incomplete, Complete, Bad };

  // Takes the next bytes of the connection. Once the head is complete, what came after it is in `Body`. Heads of
  // interim answers (code 1xx) are passed over.
  eState Take(std::span<const unsigned char> bytes);

  // Some casters of version 1 send the stream right after the first line, and some pushers of version 1 never end
  // their head. Where that may be the case and nothing has come for a second, the head ends with the lines read so far.
  bool MayEndHere() const { return m_state == eState::Incomplete && m_isLoose; }
  void EndHere() { m_state = eState::Complete; }

  eState State() const { return m_state; }
  const S_HttpHead& Head() const { return m_head; }
  std::string_view Body() const { return std::string_view(m_text).substr(m_at); }

  // Whether nothing has come yet.
  bool IsEmpty() const { return m_text.empty(); }

  // Why it is bad, for a person.
  const std::string& Error() const { return m_error; }

 private:
  bool Step();
  bool TakeFirstByte();
  bool TakeLine();
  void TakeFirstLine(std::string_view line);
  void TakeField(std::string_view line);
  bool EndsLoosely();
  bool Refuse(std::string error);

  eState m_state = eState::Incomplete;
  S_HttpHead m_head;
  std::string m_text;    // all that came
  std::size_t m_at = 0;  // how much of it has been read
  std::size_t m_lines = 0;
  bool m_hasFirstLine = false;
  bool m_isLoose = false;  // fields and the empty line may be missing
  std::string m_error;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_HTTP_HEAD_H
