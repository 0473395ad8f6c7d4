#include "apps/velagnss/json/Rtcm3Json.h"

#include "apps/velagnss/json/BinaryJson.h"
#include "apps/velagnss/json/FieldTable.h"
#include "stream/Names.h"

namespace Host {
namespace {

using namespace velagnss;

// --- Writers for the tables ---

template <auto Member, class Record>
void Flag(C_JsonWriter& json, const Record& record) {
  json.Integer(record.*Member ? 1 : 0);
}

template <class Record>
void System(C_JsonWriter& json, const Record& record) {
  const std::string_view name = SystemName(record.system);
  if (name.empty()) return json.Null();
  json.Name(name);
}

// RINEX band and attribute; empty for a number that is not assigned.
template <class Record>
void Code(C_JsonWriter& json, const Record& record) {
  if (record.code[0] == '\0') return json.Null();
  json.String(record.code);
}

template <auto Member, class Record>
void TextOrNull(C_JsonWriter& json, const Record& record) {
  json.StringOrNull((record.*Member).View());
}

template <auto Member, class Record>
void OfTime(C_JsonWriter& json, const Record& record) {
  WriteOrNull(json, record.time.*Member);
}

// An object for each of the first `count` items.
template <const auto& Fields, class Item>
void WriteItems(C_JsonWriter& json, const Item* items, std::size_t count) {
  json.BeginArray();
  for (const Item* item = items; item != items + count; ++item) {
    json.BeginObject();
    WriteFieldsOf<Fields>(json, *item);
    json.EndObject();
  }
  json.EndArray();
}

// --- Stations and networks ---

// clang-format off
constexpr S_JsonField<Rtcm3Station> kStation[] = {
    {"station",           &Plain<&Rtcm3Station::station>},
    {"physical_station",  &Value<&Rtcm3Station::physicalStation>},
    {"itrf_year",         &Plain<&Rtcm3Station::itrfYear>},
    {"serves_gps",        &Value<&Rtcm3Station::servesGps>},
    {"serves_glonass",    &Value<&Rtcm3Station::servesGlonass>},
    {"serves_galileo",    &Value<&Rtcm3Station::servesGalileo>},
    {"computed",          &Value<&Rtcm3Station::isComputed>},
    {"single_oscillator", &Value<&Rtcm3Station::singleOscillator>},
    {"quarter_cycle",     &Value<&Rtcm3Station::quarterCycle>},
    {"x_m",               &Value<&Rtcm3Station::x>},
    {"y_m",               &Value<&Rtcm3Station::y>},
    {"z_m",               &Value<&Rtcm3Station::z>},
    {"antenna_height_m",  &Value<&Rtcm3Station::antennaHeight>},
};

constexpr S_JsonField<Rtcm3Antenna> kAntenna[] = {
    {"station",         &Plain<&Rtcm3Antenna::station>},
    {"antenna_setup",   &Value<&Rtcm3Antenna::setup>},
    {"antenna",         &TextOrNull<&Rtcm3Antenna::antenna>},
    {"antenna_serial",  &TextOrNull<&Rtcm3Antenna::antennaSerial>},
    {"receiver",        &TextOrNull<&Rtcm3Antenna::receiver>},
    {"firmware",        &TextOrNull<&Rtcm3Antenna::firmware>},
    {"receiver_serial", &TextOrNull<&Rtcm3Antenna::receiverSerial>},
};

constexpr S_JsonField<Rtcm3SystemParameters::Announcement> kAnnouncement[] = {
    {"number",     &Plain<&Rtcm3SystemParameters::Announcement::message>},
    {"regular",    &Flag<&Rtcm3SystemParameters::Announcement::isRegular>},
    {"interval_s", &Value<&Rtcm3SystemParameters::Announcement::interval>},
};
void Announcements(C_JsonWriter& json, const Rtcm3SystemParameters& record) {
  WriteItems<kAnnouncement>(json, record.announcements, record.numAnnouncements);
}
constexpr S_JsonField<Rtcm3SystemParameters> kSystemParameters[] = {
    {"station",         &Plain<&Rtcm3SystemParameters::station>},
    {"mjd",             &Plain<&Rtcm3SystemParameters::mjd>},
    {"second_of_day_s", &Plain<&Rtcm3SystemParameters::secondOfDay>},
    {"leap_seconds_s",  &Value<&Rtcm3SystemParameters::leapSeconds>},
    {"announcements",   &Announcements},
};

constexpr S_JsonField<Rtcm3Message> kMessage[] = {
    {"station",         &Plain<&Rtcm3Message::station>},
    {"mjd",             &Plain<&Rtcm3Message::mjd>},
    {"second_of_day_s", &Plain<&Rtcm3Message::secondOfDay>},
    {"characters",      &Plain<&Rtcm3Message::numCharacters>},
    {"text",            &TextOrNull<&Rtcm3Message::text>},
};

constexpr S_JsonField<Rtcm3GlonassBiases> kGlonassBiases[] = {
    {"station",   &Plain<&Rtcm3GlonassBiases::station>},
    {"aligned",   &Value<&Rtcm3GlonassBiases::isAligned>},
    {"bias_1c_m", &Value<&Rtcm3GlonassBiases::l1Ca>},
    {"bias_1p_m", &Value<&Rtcm3GlonassBiases::l1P>},
    {"bias_2c_m", &Value<&Rtcm3GlonassBiases::l2Ca>},
    {"bias_2p_m", &Value<&Rtcm3GlonassBiases::l2P>},
};

constexpr S_JsonField<Rtcm3Residuals::Satellite> kResidual[] = {
    {"sv",                &Plain<&Rtcm3Residuals::Satellite::svId>},
    {"constant_mm",       &Value<&Rtcm3Residuals::Satellite::constant>},
    {"distance_ppm",      &Value<&Rtcm3Residuals::Satellite::distance>},
    {"height_ppm",        &Value<&Rtcm3Residuals::Satellite::height>},
    {"iono_constant_mm",  &Value<&Rtcm3Residuals::Satellite::ionoConstant>},
    {"iono_distance_ppm", &Value<&Rtcm3Residuals::Satellite::ionoDistance>},
};
void ResidualSatellites(C_JsonWriter& json, const Rtcm3Residuals& record) {
  WriteItems<kResidual>(json, record.satellites, record.numSatellites);
}
constexpr S_JsonField<Rtcm3Residuals> kResiduals[] = {
    {"station",    &Plain<&Rtcm3Residuals::station>},
    {"system",     &System<Rtcm3Residuals>},
    {"epoch_s",    &OfTime<&Rtcm3Time::sent>},
    {"gps_week",   &OfTime<&Rtcm3Time::week>},
    {"gps_s",      &OfTime<&Rtcm3Time::seconds>},
    {"references", &Plain<&Rtcm3Residuals::numReferences>},
    {"satellites", &ResidualSatellites},
};

// --- Observations ---

constexpr std::string_view kLocks[] = {"", "kept", "maybe lost", "lost"};  // Rtcm3Lock

template <auto Member>
void OfData(C_JsonWriter& json, const Rtcm3Signal& signal) {
  WriteOrNull(json, signal.data.*Member);
}

constexpr S_JsonField<Rtcm3Signal> kSignal[] = {
    {"signal",               &Code<Rtcm3Signal>},
    {"number",               &Value<&Rtcm3Signal::number>},
    {"pseudorange_m",        &OfData<&S_IFGnssObsData::Pseudorange>},
    {"carrier_phase_cycles", &OfData<&S_IFGnssObsData::CarrierPhase>},
    {"phase_range_m",        &Value<&Rtcm3Signal::phaseRange>},
    {"doppler_hz",           &OfData<&S_IFGnssObsData::Measurement3>},
    {"range_rate_m_per_s",   &Value<&Rtcm3Signal::rangeRate>},
    {"cn0_dbhz",             &OfData<&S_IFGnssObsData::SignalStrength>},
    {"half_cycle",           &Value<&Rtcm3Signal::halfCycle>},
    {"lock",                 &Name<&Rtcm3Signal::lock, kLocks>},
    {"lock_time_s",          &Value<&Rtcm3Signal::lockTime>},
    {"lock_indicator",       &OfData<&S_IFGnssObsData::LockCount>},
};

constexpr S_JsonField<Rtcm3Satellite> kSatelliteHead[] = {
    {"system", &System<Rtcm3Satellite>},
    {"sv",     &Value<&Rtcm3Satellite::svId>},
    {"number", &Value<&Rtcm3Satellite::number>},
};
constexpr S_JsonField<Rtcm3Satellite> kSatelliteChannel[] = {
    {"freq_channel", &ValueUnless<&Rtcm3Satellite::channel, NA_CHANNEL>},
};
constexpr S_JsonField<Rtcm3Satellite> kSatelliteBody[] = {
    {"extended_info",       &Value<&Rtcm3Satellite::extended>},
    {"rough_range_ms",      &Value<&Rtcm3Satellite::roughRange>},
    {"rough_rate_m_per_s",  &Value<&Rtcm3Satellite::roughRate>},
};

// Signals are sorted by satellite.
void ObservedSatellites(C_JsonWriter& json, const Rtcm3Observations& record) {
  const Rtcm3Signal* signal = record.signals;
  const Rtcm3Signal* const end = signal + record.numSignals;
  json.BeginArray();
  for (unsigned int i = 0; i < record.numSatellites; ++i) {
    const Rtcm3Satellite& satellite = record.satellites[i];
    const Rtcm3Signal* const first = signal;
    while (signal != end && signal->satellite == i) ++signal;
    json.BeginObject();
    WriteFieldsOf<kSatelliteHead>(json, satellite);
    if (record.system == ALGO::GNSS_GLONASS) WriteFieldsOf<kSatelliteChannel>(json, satellite);
    WriteFieldsOf<kSatelliteBody>(json, satellite);
    json.Key("signals");
    WriteItems<kSignal>(json, first, static_cast<std::size_t>(signal - first));
    json.EndObject();
  }
  json.EndArray();
}

void RangeModulus(C_JsonWriter& json, const Rtcm3Observations& record) {
  if (record.rangeModulus == 0) return json.Null();
  json.Number(record.rangeModulus);
}

constexpr S_JsonField<Rtcm3Observations> kObservations[] = {
    {"station",            &Plain<&Rtcm3Observations::station>},
    {"system",             &System<Rtcm3Observations>},
    {"epoch_ms",           &OfTime<&Rtcm3Time::sent>},
    {"day_of_week",        &OfTime<&Rtcm3Time::dayOfWeek>},
    {"gps_week",           &OfTime<&Rtcm3Time::week>},
    {"gps_s",              &OfTime<&Rtcm3Time::seconds>},
    {"more_to_come",       &Flag<&Rtcm3Observations::isMoreToCome>},
    {"station_issue",      &Value<&Rtcm3Observations::stationIssue>},
    {"clock_steering",     &Value<&Rtcm3Observations::clockSteering>},
    {"external_clock",     &Value<&Rtcm3Observations::externalClock>},
    {"smoothed",           &Value<&Rtcm3Observations::isSmoothed>},
    {"smoothing_interval", &Value<&Rtcm3Observations::smoothingInterval>},
    {"range_modulus_m",    &RangeModulus},
    {"satellites",         &ObservedSatellites},
};

// --- Ephemerides ---

constexpr S_JsonField<Rtcm3KeplerEphemeris> kKepler[] = {
    {"week_sent",      &Value<&Rtcm3KeplerEphemeris::weekSent>},
    {"accuracy_index", &Value<&Rtcm3KeplerEphemeris::accuracyIndex>},
    {"fit_flag",       &Value<&Rtcm3KeplerEphemeris::fitFlag>},
    {"data_source",    &Value<&Rtcm3KeplerEphemeris::dataSource>},
    {"tgd2_s",         &Value<&Rtcm3KeplerEphemeris::groupDelay2>},
};

constexpr S_JsonField<Rtcm3PvaEphemeris> kPva[] = {
    {"tk_sent",        &Value<&Rtcm3PvaEphemeris::frameTimeSent>},
    {"almanac_health", &Value<&Rtcm3PvaEphemeris::almanacHealth>},
    {"more_data",      &Value<&Rtcm3PvaEphemeris::hasMore>},
    {"n_a_days",       &Value<&Rtcm3PvaEphemeris::dayOfTauC>},
    {"l_n_string5",    &Value<&Rtcm3PvaEphemeris::healthOfString5>},
};

// --- Corrections ---

using t_Corrected = Rtcm3Ssr::Satellite;

constexpr S_JsonField<t_Corrected> kOrbit[] = {
    {"ephemeris_issue",        &Value<&t_Corrected::issue>},
    {"ephemeris_toe_s",        &Value<&t_Corrected::toe>},
    {"radial_m",               &Value<&t_Corrected::radial>},
    {"along_track_m",          &Value<&t_Corrected::alongTrack>},
    {"cross_track_m",          &Value<&t_Corrected::crossTrack>},
    {"radial_m_per_s",         &Value<&t_Corrected::radialRate>},
    {"along_track_m_per_s",    &Value<&t_Corrected::alongTrackRate>},
    {"cross_track_m_per_s",    &Value<&t_Corrected::crossTrackRate>},
};
constexpr S_JsonField<t_Corrected> kClock[] = {
    {"clock_m",          &Value<&t_Corrected::clock>},
    {"clock_m_per_s",    &Value<&t_Corrected::clockRate>},
    {"clock_m_per_s2",   &Value<&t_Corrected::clockAcceleration>},
};
constexpr S_JsonField<t_Corrected> kAccuracy[] = {
    {"accuracy_index", &Value<&t_Corrected::accuracyIndex>},
    {"accuracy_m",     &Value<&t_Corrected::accuracy>},
};
constexpr S_JsonField<t_Corrected> kHighRateClock[] = {
    {"high_rate_clock_m", &Value<&t_Corrected::highRateClock>},
};
constexpr S_JsonField<Rtcm3Ssr::Bias> kBias[] = {
    {"signal", &Code<Rtcm3Ssr::Bias>},
    {"number", &Plain<&Rtcm3Ssr::Bias::number>},
    {"bias_m", &Value<&Rtcm3Ssr::Bias::bias>},
};

constexpr S_JsonField<Rtcm3Ssr> kSsr[] = {
    {"system",            &System<Rtcm3Ssr>},
    {"epoch_s",           &OfTime<&Rtcm3Time::sent>},
    {"gps_week",          &OfTime<&Rtcm3Time::week>},
    {"gps_s",             &OfTime<&Rtcm3Time::seconds>},
    {"update_code",       &Plain<&Rtcm3Ssr::updateCode>},
    {"update_interval_s", &Plain<&Rtcm3Ssr::updateInterval>},
    {"more_to_come",      &Flag<&Rtcm3Ssr::isMoreToCome>},
    {"regional",          &Value<&Rtcm3Ssr::isRegional>},
    {"issue",             &Plain<&Rtcm3Ssr::issue>},
    {"provider",          &Plain<&Rtcm3Ssr::provider>},
    {"solution",          &Plain<&Rtcm3Ssr::solution>},
};
// clang-format on

// The parts that the messages of a system have, in the order of their numbers.
enum ePart : unsigned int { eOrbit = 1, eClock = 2, eBiases = 4, eAccuracy = 8, eHighRate = 16 };
constexpr unsigned int kParts[] = {eOrbit, eClock, eBiases, eOrbit | eClock, eAccuracy, eHighRate};
constexpr unsigned int kFirstOfSystem[] = {1057, 1063, 1240, 1258};  // GPS, GLONASS, Galileo, BeiDou

unsigned int PartsOf(unsigned int message) {
  for (const unsigned int first : kFirstOfSystem)
    if (message >= first && message - first < std::size(kParts)) return kParts[message - first];
  return 0;
}

void WriteCorrected(C_JsonWriter& json, const Rtcm3Ssr& record, const t_Corrected& satellite, unsigned int parts) {
  json.BeginObject();
  json.Key("sv").Integer(satellite.svId);
  if ((parts & eOrbit) != 0) WriteFieldsOf<kOrbit>(json, satellite);
  if ((parts & eClock) != 0) WriteFieldsOf<kClock>(json, satellite);
  if ((parts & eAccuracy) != 0) WriteFieldsOf<kAccuracy>(json, satellite);
  if ((parts & eHighRate) != 0) WriteFieldsOf<kHighRateClock>(json, satellite);
  if ((parts & eBiases) != 0)
    WriteItems<kBias>(json.Key("biases"), record.biases + satellite.firstBias, satellite.numBiases);
  json.EndObject();
}

}  // namespace

// What is not decoded is shown as it came.
void WriteMembers(C_JsonWriter& json, const Rtcm3Payload& record) {
  json.Key("payload").Hex({record.data, record.size});
}
void WriteMembers(C_JsonWriter& json, const Rtcm3Station& record) { WriteFieldsOf<kStation>(json, record); }
void WriteMembers(C_JsonWriter& json, const Rtcm3Antenna& record) { WriteFieldsOf<kAntenna>(json, record); }
void WriteMembers(C_JsonWriter& json, const Rtcm3SystemParameters& record) {
  WriteFieldsOf<kSystemParameters>(json, record);
}
void WriteMembers(C_JsonWriter& json, const Rtcm3Message& record) { WriteFieldsOf<kMessage>(json, record); }
void WriteMembers(C_JsonWriter& json, const Rtcm3GlonassBiases& record) { WriteFieldsOf<kGlonassBiases>(json, record); }
void WriteMembers(C_JsonWriter& json, const Rtcm3Residuals& record) { WriteFieldsOf<kResiduals>(json, record); }
void WriteMembers(C_JsonWriter& json, const Rtcm3Observations& record) { WriteFieldsOf<kObservations>(json, record); }

void WriteMembers(C_JsonWriter& json, const Rtcm3Ssr& record) {
  WriteFieldsOf<kSsr>(json, record);
  json.Key("satellites").BeginArray();
  for (unsigned int i = 0; i < record.numSatellites; ++i)
    WriteCorrected(json, record, record.satellites[i], PartsOf(record.message));
  json.EndArray();
}

void WriteMembers(C_JsonWriter& json, const Rtcm3KeplerEphemeris& record, WeekSource week) {
  WriteMembers(json, record.ephemeris, week);
  WriteFieldsOf<kKepler>(json, record);
}
void WriteMembers(C_JsonWriter& json, const Rtcm3PvaEphemeris& record, WeekSource week) {
  WriteMembers(json, record.ephemeris, week);
  WriteFieldsOf<kPva>(json, record);
}

}  // namespace Host
