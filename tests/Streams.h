// Builders of valid frames, for tests: each with its own plain way to the checksum.
#ifndef VELAGNSS_TESTS_STREAMS_H
#define VELAGNSS_TESTS_STREAMS_H

#include <cstdio>
#include <string>
#include <string_view>

#include "tests/BinaryFrames.h"

// "$...*hh\r\n": the sum is the exclusive or of everything between "$" and "*".
inline std::string Sentence(std::string_view behindDollar) {
  unsigned int sum = 0;
  for (const char c : behindDollar) sum ^= static_cast<unsigned char>(c);
  char tail[8];
  std::snprintf(tail, sizeof tail, "*%02X\r\n", sum);
  return "$" + std::string(behindDollar) + tail;
}

// The checksum of RTCM 3 bit by bit (RTCM 10403, polynomial 0x1864CFB).
inline unsigned int BitwiseCrc24(std::string_view bytes) {
  unsigned int crc = 0;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned int>(static_cast<unsigned char>(c)) << 16;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x800000) != 0 ? crc << 1 ^ 0x1864CFB : crc << 1;
  }
  return crc;
}

inline std::string RtcmFrame(std::string_view payload) {
  std::string frame = "\xD3";
  frame += static_cast<char>(payload.size() >> 8);
  frame += static_cast<char>(payload.size());
  frame += payload;
  const unsigned int crc = BitwiseCrc24(frame);
  for (const int shift : {16, 8, 0}) frame += static_cast<char>(crc >> shift);
  return frame;
}

// A payload of `size` bytes that begins with a message number.
inline std::string RtcmPayload(unsigned int number, std::size_t size) {
  std::string payload(size, '\x5A');
  payload[0] = static_cast<char>(number >> 4);
  if (size > 1) payload[1] = static_cast<char>(number << 4);
  return payload;
}

// 7-of-8 packing: 16-bit words and their sum as one bit stream, low bits first, seven bits to a byte with its top bit
// set. An odd payload is filled up to a whole word.
inline std::string Packed(std::string payload) {
  if (payload.size() % 2 != 0) payload += '\0';
  unsigned int sum = 0;
  for (std::size_t i = 0; i < payload.size(); i += 2) {
    sum += static_cast<unsigned char>(payload[i]) + 256U * static_cast<unsigned char>(payload[i + 1]);
  }
  payload += static_cast<char>(sum);
  payload += static_cast<char>(sum >> 8);
  std::string packed;
  for (std::size_t bit = 0; bit < 8 * payload.size(); bit += 7) {
    unsigned int seven = 0;
    for (std::size_t i = bit; i < bit + 7 && i < 8 * payload.size(); ++i) {
      seven |= ((static_cast<unsigned char>(payload[i / 8]) >> i % 8) & 1U) << (i - bit);
    }
    packed += static_cast<char>(0x80 | seven);
  }
  return packed;
}

#endif  // VELAGNSS_TESTS_STREAMS_H
