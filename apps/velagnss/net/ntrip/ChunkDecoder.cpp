#include "apps/velagnss/net/ntrip/ChunkDecoder.h"

#include <algorithm>

namespace Host {
namespace {

// Of a size line with its extension, and of all trailer lines together.
constexpr std::size_t kMaxLine = 4096;

int HexValue(unsigned char byte) {
  if (byte >= '0' && byte <= '9') return byte - '0';
  const int lower = byte | 0x20;
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

void C_ChunkDecoder::Decode(std::span<const unsigned char> bytes, std::vector<unsigned char>& data) {
  while (!bytes.empty() && !HasEnded() && !HasFailed()) {
    const std::size_t count = m_state == eState::Data ? std::min(m_size, bytes.size()) : 1;
    if (m_state == eState::Data) {
      data.insert(data.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
      m_size -= count;
      if (m_size == 0) m_state = eState::DataEnd;
    } else {
      TakeMark(bytes[0]);
    }
    bytes = bytes.subspan(count);
  }
}

// A byte that is not data. Line ends may lack their CR.
void C_ChunkDecoder::TakeMark(unsigned char byte) {
  const bool isLineEnd = byte == '\n';
  const bool isCr = byte == '\r';
  if (m_state == eState::DataEnd) {
    if (isLineEnd)
      m_state = eState::Size;
    else if (!isCr)
      m_state = eState::Failed;
    return;
  }
  if (++m_lineBytes > kMaxLine) {
    m_state = eState::Failed;
  } else if (m_state == eState::Size) {
    TakeDigit(byte);
  } else if (m_state == eState::Extension) {
    if (isLineEnd) EndSizeLine();
  } else if (isLineEnd) {
    m_state = m_state == eState::TrailerStart ? eState::End : eState::TrailerStart;
  } else if (!isCr) {
    m_state = eState::Trailer;
  }
}

void C_ChunkDecoder::TakeDigit(unsigned char byte) {
  const int digit = HexValue(byte);
  if (digit >= 0) {
    m_size = m_size * 16 + static_cast<std::size_t>(digit);
    m_hasDigit = true;
    if (m_size > kMaxChunk) m_state = eState::Failed;
  } else if (!m_hasDigit) {
    m_state = eState::Failed;
  } else if (byte == '\n') {
    EndSizeLine();
  } else {
    const bool isAllowed = byte == '\r' || byte == ';' || byte == ' ' || byte == '\t';
    m_state = isAllowed ? eState::Extension : eState::Failed;
  }
}

void C_ChunkDecoder::EndSizeLine() {
  m_state = m_size > 0 ? eState::Data : eState::TrailerStart;
  m_lineBytes = 0;
  m_hasDigit = false;
}

}  // namespace Host
