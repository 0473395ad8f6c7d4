// How far each binary message is decoded.
//
// Internal. `C_VelaBin_Decode::Decode` answers success for all supported messages, whether it knows their fields or
// not; whoever shows or converts a record asks here what the record holds beyond its header.
#ifndef VELAGNSS_BINPROTO_MESSAGE_CONTENTS_H
#define VELAGNSS_BINPROTO_MESSAGE_CONTENTS_H

namespace velagnss::binproto {

enum class eContents : unsigned char {
  eUnsupported,    // not decoded at all: `Decode` answers eResultUnknownMessage
  eHeaderOnly,     // observations: header and trailer, no satellite
  eSatelliteOnly,  // ephemeris that names its satellite and system, every other field empty
  eRawBody,        // header, the data bytes as received, trailer
  eFieldsBySize,   // fields of known size and unknown meaning
  eFull,           // every field, in SI units
};

// What the record of a message holds. Any number may be asked for.
eContents ContentsOf(unsigned int messageNumber);

}  // namespace velagnss::binproto

#endif  // VELAGNSS_BINPROTO_MESSAGE_CONTENTS_H
