// A session under construction: its bytes, and what a careful reader must find in them.
#ifndef VELAGNSS_SAMPLES_SESSION_H
#define VELAGNSS_SAMPLES_SESSION_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "samples/Moment.h"
#include "samples/Packing.h"

// Protocols by the numbers under which a reader reports them.
enum eProtocol { eRox, eRtcm, eNmea, eBlock, ePkvn, eDiagnostic, eSite, eAcknowledgement, eInfo, eQuery, eGeo };

constexpr std::uint32_t kNoType = 0xFFFFFFFF;  // message type of frames that have none

// One good frame.
struct S_Frame {
  eProtocol protocol;
  std::uint32_t type;  // as a reader reports it
  std::string name;    // of the message, for counting: "GGA", "1077", "95"
  std::string bytes;   // as a reader delivers it
  std::string tail;    // rest of the line end, sent after it but no part of the delivered frame
  std::string facts;   // members of a JSON object: the numbers sent, for frames whose decoding is checked
};

// What a frame's builder may know: the time, the pseudo-random numbers, and how often it was called before.
struct S_Context {
  S_Moment now;
  C_Random random;
  unsigned int round;
};

class C_Session {
 public:
  void Add(const S_Frame& frame);
  // Bytes that open no frame at all, or only false ones.
  void AddNoise(std::string_view bytes);
  // A bad frame. `result` is what a reader answers when it gives up the first byte: 1 no frame starts here,
  // 4 the checksum is wrong, 5 refused for another reason.
  void AddFault(std::string_view bytes, std::string_view what, int result);
  // A command acknowledgement: only a reader that asks for them delivers it.
  void AddAcknowledgement(std::string_view text);

  const std::string& Bytes() const { return m_bytes; }
  std::string Manifest() const;  // JSON

 private:
  struct S_Place {
    std::size_t offset;
    std::size_t length;
  };
  struct S_Found : S_Place {
    eProtocol protocol;
    std::uint32_t type;
  };
  struct S_Fault : S_Place {
    std::string what;
    int result;
  };

  S_Place Append(std::string_view bytes);
  S_Place AppendStray(std::string_view bytes);
  void Count(const S_Frame& frame);
  std::string CountsJson() const;
  std::string FramesJson() const;
  std::string FaultsJson() const;

  std::string m_bytes;
  std::size_t m_acceptedBytes = 0;  // delivered frames and the line ends after them
  std::vector<S_Found> m_frames;
  std::vector<S_Fault> m_faults;
  std::vector<S_Place> m_noise;
  std::vector<S_Place> m_acknowledgements;
  std::vector<std::string> m_facts;
  std::map<int, std::map<std::uint32_t, std::pair<std::string, int>>> m_counts;  // protocol, type: name, frames
};

#endif  // VELAGNSS_SAMPLES_SESSION_H
