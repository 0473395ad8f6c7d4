// The values by which every record says "not available", so that an absent value can be told from zero.
//
// A record is reset to its markers before it is filled; encoders write an empty field for a marker. So a member holds
// its marker when the frame did not carry the value, when the frame carried it as "not available", or when the decoder
// stopped before it. Enumerations have an enumerator for it instead (`eNmeaModeEmpty`, `GNSS_UNKNOWN`), letters NUL.
//
//   if (!IsNotAvailable(record.altitude)) Show(record.altitude);
#ifndef VELAGNSS_GEO_NOT_AVAILABLE_H
#define VELAGNSS_GEO_NOT_AVAILABLE_H

// The double whose eight bytes are all 0xCC. A number that no receiver sends; it compares equal to itself.
inline constexpr double NA_DOUBLE = -0x1.cccccccccccccp+205;  // -9.255963134931783e61

// The other types have one marker each.
inline constexpr float NA_FLOAT = -3.4e38F;
inline constexpr unsigned char NA_U8 = 255;
inline constexpr unsigned short NA_U16 = 65535;
inline constexpr unsigned int NA_U32 = 0xFFFFFFFF;  // 32-bit identifiers
inline constexpr signed char NA_CHANNEL = -128;     // GLONASS frequency channel

// Whether a member of a record holds its marker: chosen by the member's type, compared by value. Members whose marker
// is another one (the time zone of ZDA, a quality of 10) say so in their record.
constexpr bool IsNotAvailable(double value) { return value == NA_DOUBLE; }
constexpr bool IsNotAvailable(float value) { return value == NA_FLOAT; }
constexpr bool IsNotAvailable(unsigned char value) { return value == NA_U8; }
constexpr bool IsNotAvailable(unsigned short value) { return value == NA_U16; }
constexpr bool IsNotAvailable(unsigned int value) { return value == NA_U32; }
constexpr bool IsNotAvailable(signed char value) { return value == NA_CHANNEL; }

#endif  // VELAGNSS_GEO_NOT_AVAILABLE_H
