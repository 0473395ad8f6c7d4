#include "apps/velagnss/json/BinaryJson.h"

#include "apps/velagnss/json/FieldTable.h"
#include "apps/velagnss/text/TimeText.h"
#include "stream/Names.h"

namespace Host {
namespace {

using velagnss::WeekSource;

constexpr std::string_view kWeekSources[] = {"", "seed", "stream"};  // velagnss::WeekSource

template <class Record>
void System(C_JsonWriter& json, const Record& record) {
  const std::string_view name = velagnss::SystemName(ALGO::eGNSSSystem{record.System});
  if (name.empty()) return json.Null();
  json.String(name);
}

constexpr double kNoAccuracy = 1e99;  // m: accuracy index 15, "no prediction" (IS-GPS-200, 20.3.3.3.1.3)

void Ura(C_JsonWriter& json, const S_IFKeplerEphRec& record) {
  if (record.Ura >= kNoAccuracy) return json.Null();
  WriteOrNull(json, record.Ura);
}

// The field holds hours for GPS, but the flag as broadcast for QZSS.
void FitInterval(C_JsonWriter& json, const S_IFKeplerEphRec& record) {
  if (record.System == ALGO::GNSS_QZSS) return json.Null();
  WriteOrNull(json, record.FitInterval);
}
void FitIntervalFlag(C_JsonWriter& json, const S_IFKeplerEphRec& record) {
  if (record.System != ALGO::GNSS_QZSS) return json.Null();
  WriteOrNull(json, record.FitInterval);
}

// clang-format off
constexpr S_JsonField<S_IFKeplerEphRec> kKeplerHead[] = {
    {"system",  &System<S_IFKeplerEphRec>},
    {"sv",      &Value<&S_IFKeplerEphRec::SvId>},
    {"health",  &Value<&S_IFKeplerEphRec::Health>},
    {"iode",    &Plain<&S_IFKeplerEphRec::Iode>},
};
constexpr S_JsonField<S_IFKeplerEphRec> kKeplerBody[] = {
    {"af0_s",                 &Value<&S_IFKeplerEphRec::Af0>},
    {"af1_s_per_s",           &Value<&S_IFKeplerEphRec::Af1>},
    {"af2_s_per_s2",          &Value<&S_IFKeplerEphRec::Af2>},
    {"m0_rad",                &Value<&S_IFKeplerEphRec::M0>},
    {"delta_n_rad_per_s",     &Value<&S_IFKeplerEphRec::DeltaN>},
    {"eccentricity",          &Value<&S_IFKeplerEphRec::Ecc>},
    {"sqrt_a_sqrt_m",         &Value<&S_IFKeplerEphRec::SqrtA>},
    {"omega0_rad",            &Value<&S_IFKeplerEphRec::Omega0>},
    {"i0_rad",                &Value<&S_IFKeplerEphRec::I0>},
    {"omega_rad",             &Value<&S_IFKeplerEphRec::Omega>},
    {"omega_dot_rad_per_s",   &Value<&S_IFKeplerEphRec::OmegaDot>},
    {"i_dot_rad_per_s",       &Value<&S_IFKeplerEphRec::IDot>},
    {"cuc_rad",               &Value<&S_IFKeplerEphRec::Cuc>},
    {"cus_rad",               &Value<&S_IFKeplerEphRec::Cus>},
    {"crc_m",                 &Value<&S_IFKeplerEphRec::Crc>},
    {"crs_m",                 &Value<&S_IFKeplerEphRec::Crs>},
    {"cic_rad",               &Value<&S_IFKeplerEphRec::Cic>},
    {"cis_rad",               &Value<&S_IFKeplerEphRec::Cis>},
    {"code_on_l2",            &Value<&S_IFKeplerEphRec::CodeOnL2>},
    {"l2p_data_flag",         &Value<&S_IFKeplerEphRec::L2PDataFlag>},
    {"ura_m",                 &Ura},
    {"tgd_s",                 &Value<&S_IFKeplerEphRec::Tgd>},
    {"iodc",                  &Value<&S_IFKeplerEphRec::Iodc>},
    {"fit_interval_h",        &FitInterval},
    {"fit_interval_flag",     &FitIntervalFlag},
};

constexpr S_JsonField<S_IFPvaEphRec> kPvaHead[] = {
    {"system",  &System<S_IFPvaEphRec>},
    {"sv",      &Value<&S_IFPvaEphRec::SvId>},
    {"health",  &Value<&S_IFPvaEphRec::Health>},
    {"iod",     &Plain<&S_IFPvaEphRec::Iod>},
};
constexpr S_JsonField<S_IFPvaEphRec> kPvaBody[] = {
    {"tau_n_s",        &Value<&S_IFPvaEphRec::TauN>},
    {"gamma_n",        &Value<&S_IFPvaEphRec::GammaN>},
    {"x_m",            &Value<&S_IFPvaEphRec::PosX>},
    {"y_m",            &Value<&S_IFPvaEphRec::PosY>},
    {"z_m",            &Value<&S_IFPvaEphRec::PosZ>},
    {"vx_m_per_s",     &Value<&S_IFPvaEphRec::VelX>},
    {"vy_m_per_s",     &Value<&S_IFPvaEphRec::VelY>},
    {"vz_m_per_s",     &Value<&S_IFPvaEphRec::VelZ>},
    {"ax_m_per_s2",    &Value<&S_IFPvaEphRec::AccX>},
    {"ay_m_per_s2",    &Value<&S_IFPvaEphRec::AccY>},
    {"az_m_per_s2",    &Value<&S_IFPvaEphRec::AccZ>},
    {"ft",             &Value<&S_IFPvaEphRec::Ft>},
    {"tb",             &Value<&S_IFPvaEphRec::Tb>},
};
constexpr S_JsonField<S_IFPvaEphRec> kGlonassOnly[] = {
    {"freq_channel",   &ValueUnless<&S_IFPvaEphRec::FreqChannel, NA_CHANNEL>},
    {"delta_tau_n_s",  &Value<&S_IFPvaEphRec::DeltaTauN>},
    {"tau_gps_s",      &Value<&S_IFPvaEphRec::TauGps>},
    {"tau_c_s",        &Value<&S_IFPvaEphRec::TauC>},
    {"e_n_days",       &Value<&S_IFPvaEphRec::En>},
    {"b_n_bits",       &Plain<&S_IFPvaEphRec::BnBits>},
    {"m",              &Plain<&S_IFPvaEphRec::M>},
    {"p",              &Plain<&S_IFPvaEphRec::P>},
    {"n4",             &Plain<&S_IFPvaEphRec::N4>},
    {"n_t_days",       &Plain<&S_IFPvaEphRec::Nt>},
    {"n",              &Plain<&S_IFPvaEphRec::N>},
    {"p1",             &Plain<&S_IFPvaEphRec::P1>},
    {"p2",             &Plain<&S_IFPvaEphRec::P2>},
    {"p3",             &Plain<&S_IFPvaEphRec::P3>},
    {"p4",             &Plain<&S_IFPvaEphRec::P4>},
    {"l_n",            &Plain<&S_IFPvaEphRec::Ln>},
};
// clang-format on

// A time of week: its week, its seconds, and both as a date. Without a resolved week, only the seconds mean anything.
struct S_TimeNames {
  std::string_view week;
  std::string_view seconds;
  std::string_view date;
};
constexpr S_TimeNames kTransmission{"tx_week", "tx_s", "tx_time"};
constexpr S_TimeNames kEphemerisReference{"toe_week", "toe_s", "toe_time"};
constexpr S_TimeNames kClockReference{"toc_week", "toc_s", "toc_time"};
constexpr S_TimeNames kFrame{"frame_week", "frame_s", "frame_time"};
constexpr S_TimeNames kReference{"ref_week", "ref_s", "ref_time"};

class C_TimeWriter {
 public:
  C_TimeWriter(C_JsonWriter& json, WeekSource source, unsigned char timeSystem)
      : m_json(json), m_isResolved(source != WeekSource::None), m_system(ALGO::eGNSSSystem{timeSystem}) {}

  void Write(const S_TimeNames& names, unsigned short week, double seconds) {
    m_json.Key(names.week).IntegerOrNull(m_isResolved ? std::optional(week) : std::nullopt);
    WriteOrNull(m_json.Key(names.seconds), seconds);
    m_json.Key(names.date);
    const C_TimeText date = C_TimeText::WeekTime(week, seconds, m_system);
    if (!m_isResolved || date.IsEmpty()) return m_json.Null();
    m_json.String(date.Text());
  }

 private:
  C_JsonWriter& m_json;
  bool m_isResolved;
  ALGO::eGNSSSystem m_system;
};

void WritWeekSource(C_JsonWriter& json, WeekSource week) { WriteName<kWeekSources>(json.Key("week"), week); }

}  // namespace

void WriteMembers(C_JsonWriter& json, const S_IFKeplerEphRec& record, WeekSource week) {
  WriteFields(json, kKeplerHead, record);
  WritWeekSource(json, week);
  C_TimeWriter times(json, week, record.TimeSystem);
  times.Write(kTransmission, record.TxWeek, record.TxTime);
  times.Write(kEphemerisReference, record.ToeWeek, record.Toe);
  times.Write(kClockReference, record.TocWeek, record.Toc);
  WriteFields(json, kKeplerBody, record);
}

void WriteMembers(C_JsonWriter& json, const S_IFPvaEphRec& record, WeekSource week) {
  WriteFields(json, kPvaHead, record);
  WritWeekSource(json, week);
  C_TimeWriter times(json, week, record.TimeSystem);
  // Without its week the frame time of an SBAS message is not known, and of GLONASS only the times of day are.
  const bool hasFrameTime = week != WeekSource::None;
  const bool hasRefTime = hasFrameTime || record.System != ALGO::GNSS_GLONASS;
  times.Write(kReference, record.RefWeek, hasRefTime ? record.RefTime : NA_DOUBLE);
  times.Write(kFrame, record.FrameWeek, hasFrameTime ? record.FrameTime : NA_DOUBLE);
  WriteFields(json, kPvaBody, record);
  if (record.System == ALGO::GNSS_GLONASS) WriteFields(json, kGlonassOnly, record);
}

void WriteMembers(C_JsonWriter& json, const VelaBIN_Messages::S_BinMsg209& record) {
  json.Key("time").Number(record.Time);
  json.Key("week").Integer(record.Week);
  json.Key("entries").BeginArray();
  for (const auto& entry : record.Entry) {
    json.BeginObject();
    json.Key("a").Integer(entry.A);
    json.Key("b").Integer(entry.B);
    json.Key("c").Integer(entry.C);
    json.Key("d").Integer(entry.D);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace Host
