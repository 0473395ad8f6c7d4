// The values that mean "not available" in a record, so that missing values are distinct from zero.
//
// A decoder sets a record to its markers before it fills it, and encoders write an empty field for a marker. A member
// therefore holds its marker when the frame did not carry the value, when it carried it as "not available", or when the
// decoder stopped before it. Enumerations have an enumerator instead (`eNmeaModeEmpty`, `GNSS_UNKNOWN`), letters NUL.
//
//   if (!IsNotAvailable(record.altitude)) Show(record.altitude);
#ifndef VELAGNSS_GEO_NOT_AVAILABLE_H
#define VELAGNSS_GEO_NOT_AVAILABLE_H

// The double whose eight bytes are all 0xCC. No receiver sends this number, and unlike NaN it compares equal to itself.
inline constexpr double NA_DOUBLE = -0x1.cccccccccccccp+205;  // -9.255963134931783e61

// The other types have one marker each.
inline constexpr float NA_FLOAT = -3.4e38F;
inline constexpr unsigned char NA_U8 = 255;
inline constexpr unsigned short NA_U16 = 65535;
inline constexpr unsigned int NA_U32 = 0xFFFFFFFF;  // 32-bit identifiers
inline constexpr signed char NA_CHANNEL = -128;     // GLONASS frequency channel

// Whether a member of a record holds its marker. The type of the member selects the marker. Members with another marker
// (the time zone of ZDA, a quality of 10) say so in their record.
constexpr bool IsNotAvailable(double value) { return value == NA_DOUBLE; }
constexpr bool IsNotAvailable(float value) { return value == NA_FLOAT; }
constexpr bool IsNotAvailable(unsigned char value) { return value == NA_U8; }
constexpr bool IsNotAvailable(unsigned short value) { return value == NA_U16; }
constexpr bool IsNotAvailable(unsigned int value) { return value == NA_U32; }
constexpr bool IsNotAvailable(signed char value) { return value == NA_CHANNEL; }

#endif  // VELAGNSS_GEO_NOT_AVAILABLE_H
