// Records of the NMEA 0183 sentences beyond the eight of textproto/NMEA_Records.h, and of any other sentence.
// textproto/NmeaSentenceCodec.h reads and writes them.
//
// The fields are those of NMEA 0183 4.11. A new record is empty: numbers hold their marker (geo/NotAvailable.h),
// letters NUL, texts nothing. Letters are kept as sent; the comment lists those of the standard.
//
// Texts are views into the sentence that was decoded. They hold as long as its bytes do.
#ifndef VELAGNSS_TEXTPROTO_NMEA_MORE_RECORDS_H
#define VELAGNSS_TEXTPROTO_NMEA_MORE_RECORDS_H

#include <cstddef>
#include <string_view>
#include <variant>

#include "geo/NotAvailable.h"
#include "textproto/NMEA_Records.h"

namespace velagnss {

// How many digits of a time are read and written. `All` is nanoseconds; it also completes a year of two digits in ZDA
// as that of RMC, from 2000 on.
enum class TimeDigits : unsigned char {
  Hundredths,  // of a second, as `C_NMEA_EncodeDecode` does
  All,         // as sent; at least two decimals are written, and a leap second as 23:59:60
};

// GST: statistics of the position error.
//
//   $GPGST,172814.0,0.006,0.023,0.020,273.6,0.023,0.020,0.031*6A
struct GstRecord {
  char talker[2] = {};                    // of the sentence id: "GP", "II", ...
  double timeOfDay = NA_DOUBLE;           // s of the UTC day
  double rangeRms = NA_DOUBLE;            // RMS of the range residuals, as sent
  double semiMajor = NA_DOUBLE;           // m, standard deviation along the semi-major axis of the error ellipse
  double semiMinor = NA_DOUBLE;           // m, along the semi-minor axis
  double orientation = NA_DOUBLE;         // degrees from true north, of the semi-major axis
  double latitudeDeviation = NA_DOUBLE;   // m, standard deviation
  double longitudeDeviation = NA_DOUBLE;  // m
  double altitudeDeviation = NA_DOUBLE;   // m
};

// GBS: satellite fault detection (RAIM).
//
//   $GPGBS,015509.00,-0.031,-0.186,0.219,19,0.000,-0.354,6.972*4D
struct GbsRecord {
  char talker[2] = {};                  // of the sentence id: "GP", "II", ...
  double timeOfDay = NA_DOUBLE;         // s of the UTC day
  double latitudeError = NA_DOUBLE;     // m, expected
  double longitudeError = NA_DOUBLE;    // m, expected
  double altitudeError = NA_DOUBLE;     // m, expected
  unsigned short satelliteId = NA_U16;  // most likely failed, by NMEA 0183
  double probability = NA_DOUBLE;       // of a missed detection for it
  double bias = NA_DOUBLE;              // m, estimate for it
  double biasDeviation = NA_DOUBLE;     // m, standard deviation of that estimate
  unsigned char systemId = NA_U8;       // NMEA system id, one hexadecimal digit; from 4.1 on
  unsigned char signalId = NA_U8;       // NMEA signal id, one hexadecimal digit; from 4.1 on
};

// GRS: range residuals, in the order of the satellites of the GSA that belongs to it.
//
//   $GPGRS,024603.00,1,-1.8,-2.7,0.3,,,,,,,,,*6C
struct GrsRecord {
  char talker[2] = {};           // of the sentence id: "GP", "II", ...
  double timeOfDay = NA_DOUBLE;  // s of the UTC day, of the GGA that belongs to it
  unsigned char mode = NA_U8;    // 0: used in the position of that GGA; 1: computed after it
  double residual[12] = {NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE,
                         NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE};  // m
  unsigned char systemId = NA_U8;                                                            // as in GbsRecord
  unsigned char signalId = NA_U8;                                                            // as in GbsRecord
};

// HDT: true heading.
//
//   $GPHDT,274.07,T*03
struct HdtRecord {
  char talker[2] = {};             // of the sentence id: "GP", "II", ...
  double headingTrue = NA_DOUBLE;  // degrees
};

// THS: true heading and status.
//
//   $GPTHS,77.52,E*34
struct ThsRecord {
  char talker[2] = {};             // of the sentence id: "GP", "II", ...
  double headingTrue = NA_DOUBLE;  // degrees
  char mode = '\0';                // A autonomous, E estimated, M manual, S simulator, V not valid
};

// HDG: reading of a magnetic sensor, and what corrects it.
//
//   $HCHDG,98.3,0.0,E,12.6,W*57
//
// Deviation east is added to the reading, west subtracted; this is the magnetic heading. The variation makes it true.
struct HdgRecord {
  char talker[2] = {};               // of the sentence id: "GP", "II", ...
  double headingSensor = NA_DOUBLE;  // degrees
  double deviation = NA_DOUBLE;      // degrees, without sign
  char deviationDirection = '\0';    // E, W
  double variation = NA_DOUBLE;      // degrees, without sign
  char variationDirection = '\0';    // E, W
};

// ROT: rate of turn.
//
//   $HEROT,-11.23,A*07
struct RotRecord {
  char talker[2] = {};      // of the sentence id: "GP", "II", ...
  double rate = NA_DOUBLE;  // degrees per minute; negative: the bow turns to port
  char status = '\0';       // A valid, V not valid
};

// DTM: datum of the positions, and its offset from the reference datum.
//
//   $GPDTM,W84,,0.0,N,0.0,E,0.0,W84*6F
struct DtmRecord {
  char talker[2] = {};                 // of the sentence id: "GP", "II", ...
  std::string_view localDatum;         // W84 WGS-84, W72 WGS-72, S85 SGS-85, P90 PZ-90, 999 user defined, or IHO code
  std::string_view subdivision;        // of the local datum
  double latitudeOffset = NA_DOUBLE;   // minutes of arc, without sign
  char latitudeDirection = '\0';       // N, S
  double longitudeOffset = NA_DOUBLE;  // minutes of arc, without sign
  char longitudeDirection = '\0';      // E, W
  double altitudeOffset = NA_DOUBLE;   // m
  std::string_view referenceDatum;     // as `localDatum`
};

// TXT: text.
//
//   $GPTXT,01,01,02,ANTENNA OK*36
//
// Receivers put commas into the text although the standard forbids it, so the text extends to the checksum. An escape
// "^hh" is left as it is.
struct TxtRecord {
  char talker[2] = {};                   // of the sentence id: "GP", "II", ...
  unsigned char totalSentences = NA_U8;  // of this text
  unsigned char sentenceNumber = NA_U8;  // from 1 on
  unsigned char identifier = NA_U8;      // of the text, by the sender; often 0 error, 1 warning, 2 notice, 7 user
  std::string_view text;                 // as sent
};

// VHW: heading, and speed through the water.
//
//   $SDVHW,182.4,T,181.7,M,0.0,N,0.0,K*42
struct VhwRecord {
  char talker[2] = {};                 // of the sentence id: "GP", "II", ...
  double headingTrue = NA_DOUBLE;      // degrees
  double headingMagnetic = NA_DOUBLE;  // degrees
  double speedKnots = NA_DOUBLE;       // through the water
  double speedKmh = NA_DOUBLE;         // the same, km/h
};

// DBT: depth of water below the transducer, in three units.
//
//   $SDDBT,1.8,f,0.5,M,0.3,F*09
struct DbtRecord {
  char talker[2] = {};              // of the sentence id: "GP", "II", ...
  double depthFeet = NA_DOUBLE;     // feet
  double depthMeters = NA_DOUBLE;   // m
  double depthFathoms = NA_DOUBLE;  // fathoms
};

// DPT: depth of water.
//
//   $SDDPT,0.5,0.5,*7B
struct DptRecord {
  char talker[2] = {};          // of the sentence id: "GP", "II", ...
  double depth = NA_DOUBLE;     // m below the transducer
  double offset = NA_DOUBLE;    // m; positive: from transducer to water line, negative: from transducer to keel
  double maxRange = NA_DOUBLE;  // m, range scale in use; from NMEA 0183 3.0 on
};

// MTW: temperature of the water.
//
//   $SDMTW,12.6,C*01
struct MtwRecord {
  char talker[2] = {};             // of the sentence id: "GP", "II", ...
  double temperature = NA_DOUBLE;  // degrees Celsius
};

// MWV: wind speed and angle.
//
//   $WIMWV,297.6,R,5.6,N,A*2A
struct MwvRecord {
  char talker[2] = {};       // of the sentence id: "GP", "II", ...
  double angle = NA_DOUBLE;  // degrees, 0 to 359, clockwise from the bow
  char reference = '\0';     // R relative (apparent), T theoretical (true)
  double speed = NA_DOUBLE;  // in the unit that follows
  char speedUnit = '\0';     // K km/h, M m/s, N knots, S statute miles per hour
  char status = '\0';        // A valid, V not valid
};

// VLW: distance traveled.
//
//   $IIVLW,7803.2,N,0.00,N*43
struct VlwRecord {
  char talker[2] = {};             // of the sentence id: "GP", "II", ...
  double totalWater = NA_DOUBLE;   // nautical miles through the water
  double tripWater = NA_DOUBLE;    // since reset
  double totalGround = NA_DOUBLE;  // over ground; from NMEA 0183 3.0 on
  double tripGround = NA_DOUBLE;   // since reset; likewise
};

// RMB: recommended minimum navigation information, to a waypoint.
//
//   $GPRMB,A,0.66,L,003,004,4917.24,N,12309.57,W,001.3,052.5,000.5,V*20
struct RmbRecord {
  char talker[2] = {};                       // of the sentence id: "GP", "II", ...
  char status = '\0';                        // A valid, V warning
  double crossTrackError = NA_DOUBLE;        // nautical miles; 9.99 for that and more
  char steer = '\0';                         // L, R: direction to steer
  std::string_view origin;                   // waypoint
  std::string_view destination;              // waypoint
  double latitude = NA_DOUBLE;               // degrees, north positive, of the destination
  double longitude = NA_DOUBLE;              // degrees, east positive
  double range = NA_DOUBLE;                  // nautical miles to the destination; 999.9 for that and more
  double bearingTrue = NA_DOUBLE;            // degrees, to the destination
  double closingSpeed = NA_DOUBLE;           // knots
  char arrival = '\0';                       // A arrived, V not
  eNmeaModeIndicator mode = eNmeaModeEmpty;  // from NMEA 0183 2.3 on
};

// XTE: cross-track error.
//
//   $GPXTE,A,A,0.67,L,N*6F
struct XteRecord {
  char talker[2] = {};                       // of the sentence id: "GP", "II", ...
  char status = '\0';                        // A valid, V general warning
  char lockStatus = '\0';                    // A valid or not used, V cycle lock warning (LORAN-C)
  double crossTrackError = NA_DOUBLE;        // nautical miles
  char steer = '\0';                         // L, R: direction to steer
  eNmeaModeIndicator mode = eNmeaModeEmpty;  // from NMEA 0183 2.3 on
};

// APB: heading and track controller, sentence B.
//
//   $GPAPB,A,A,0.10,R,N,V,V,011,M,DEST,011,M,011,M*3C
struct ApbRecord {
  char talker[2] = {};                       // of the sentence id: "GP", "II", ...
  char status = '\0';                        // A valid, V general warning
  char lockStatus = '\0';                    // A valid or not used, V cycle lock warning (LORAN-C)
  double crossTrackError = NA_DOUBLE;        // nautical miles
  char steer = '\0';                         // L, R: direction to steer
  char arrival = '\0';                       // A arrival circle entered, V not
  char perpendicular = '\0';                 // A perpendicular passed at the waypoint, V not
  double bearingOrigin = NA_DOUBLE;          // degrees, origin to destination
  char bearingOriginReference = '\0';        // M magnetic, T true
  std::string_view destination;              // waypoint
  double bearing = NA_DOUBLE;                // degrees, present position to destination
  char bearingReference = '\0';              // M, T
  double headingToSteer = NA_DOUBLE;         // degrees
  char headingReference = '\0';              // M, T
  eNmeaModeIndicator mode = eNmeaModeEmpty;  // from NMEA 0183 2.3 on
};

// BWC: bearing and distance to a waypoint, great circle.
//
//   $GPBWC,195811,5307.2833,N,00521.7536,E,213.9,T,213.2,M,4.25,N,,A*59
struct BwcRecord {
  char talker[2] = {};                       // of the sentence id: "GP", "II", ...
  double timeOfDay = NA_DOUBLE;              // s of the UTC day
  double latitude = NA_DOUBLE;               // degrees, north positive, of the waypoint
  double longitude = NA_DOUBLE;              // degrees, east positive
  double bearingTrue = NA_DOUBLE;            // degrees
  double bearingMagnetic = NA_DOUBLE;        // degrees
  double distance = NA_DOUBLE;               // nautical miles
  std::string_view waypoint;                 // its id
  eNmeaModeIndicator mode = eNmeaModeEmpty;  // from NMEA 0183 2.3 on
};

// WPL: position of a waypoint.
//
//   $GPWPL,4807.038,N,01131.000,E,WPTNME*5C
struct WplRecord {
  char talker[2] = {};           // of the sentence id: "GP", "II", ...
  double latitude = NA_DOUBLE;   // degrees, north positive
  double longitude = NA_DOUBLE;  // degrees, east positive
  std::string_view waypoint;     // its id
};

// The fields of a sentence one after the other: for (std::string_view field : fields).
class FieldList {
 public:
  // Walks over the fields, for the range-based for loop.
  class Iterator {
   public:
    // The field that it is at.
    std::string_view operator*() const { return m_rest.substr(1, Length()); }
    // Goes on to the next field.
    Iterator& operator++() {
      m_rest.remove_prefix(1 + Length());
      return *this;
    }
    // Whether the two are at different fields of one list.
    bool operator!=(const Iterator& other) const { return m_rest.size() != other.m_rest.size(); }

   private:
    friend class FieldList;
    explicit Iterator(std::string_view rest) : m_rest(rest) {}
    std::size_t Length() const {
      const std::size_t comma = m_rest.find(',', 1);
      return (comma == std::string_view::npos ? m_rest.size() : comma) - 1;
    }
    std::string_view m_rest;  // from the comma before the field on
  };

  FieldList() = default;

  // A text of fields, each led by a comma: ",1,,A" has "1", "" and "A". An empty text has none.
  explicit FieldList(std::string_view text) : m_text(text) {}

  // The first field, and the place after the last one.
  Iterator begin() const { return Iterator(m_text); }
  Iterator end() const { return Iterator({}); }

  // All fields, each led by its comma.
  std::string_view Text() const { return m_text; }

 private:
  std::string_view m_text;
};

// Any other sentence: its address and its fields as texts.
//
//   $IIXDR,C,19.5,C,TempAir*2B       talker II, formatter XDR
//   $PGRME,15.0,M,45.0,M,25.0,M*1C   proprietary: manufacturer GRM, sentence PGRME
//   !AIVDM,1,1,,A,...                encapsulated data: talker AI, formatter VDM
struct OtherSentence {
  char start = '$';          // '$', or '!' for encapsulated data
  std::string_view address;  // capital letters and digits up to the first comma
  FieldList fields;          // between the address and the checksum

  // Whether the address begins with "P": proprietary.
  bool IsProprietary() const { return !address.empty() && address[0] == 'P'; }

  // The parts of the address of a sentence that is not proprietary.
  std::string_view Talker() const { return address.substr(0, 2); }
  std::string_view Formatter() const { return address.size() < 2 ? std::string_view() : address.substr(2); }

  // The three letters of the manufacturer in the address of a proprietary one.
  std::string_view Maker() const { return address.empty() ? std::string_view() : address.substr(1, 3); }
};

// Any sentence of NMEA 0183. `variationDirection` of S_RMC_Data is the letter that was sent, 'E' or 'W', or 0.
using NmeaRecord = std::variant<OtherSentence, S_GGA_Data, S_GNS_Data, S_ZDA_Data, S_GLL_Data, S_GSV_Data, S_GSA_Data,
                                S_RMC_Data, S_VTG_Data, GstRecord, GbsRecord, GrsRecord, HdtRecord, ThsRecord,
                                HdgRecord, RotRecord, DtmRecord, TxtRecord, VhwRecord, DbtRecord, DptRecord, MtwRecord,
                                MwvRecord, VlwRecord, RmbRecord, XteRecord, ApbRecord, BwcRecord, WplRecord>;

}  // namespace velagnss

#endif  // VELAGNSS_TEXTPROTO_NMEA_MORE_RECORDS_H
