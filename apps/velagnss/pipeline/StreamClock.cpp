#include "apps/velagnss/pipeline/StreamClock.h"

#include <cmath>
#include <limits>

#include "geo/NotAvailable.h"

namespace Host {
namespace {

constexpr double kSecondsPerDay = 86400.0;

bool IsRealDate(unsigned int year, unsigned int month, unsigned int day) {
  return year >= 1980 && year <= 2100 && month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

bool IsVoid(eNmeaRmcStatus status) { return status >= eNmeaRmcNotValid; }

}  // namespace

bool C_StreamClock::IsTimeOfDay(double seconds) { return seconds >= 0 && seconds < kSecondsPerDay + 1; }

void C_StreamClock::Note(C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& record) {
  switch (type) {
    case C_RawDataMessage::eNmeaGGA:
      return NoteTimeOfDay(record.gga.timeOfDay);
    case C_RawDataMessage::eNmeaGNS:
      return NoteTimeOfDay(record.gns.timeOfDay);
    case C_RawDataMessage::eNmeaGLL:
      return NoteTimeOfDay(record.gll.timeOfDay);
    case C_RawDataMessage::eNmeaZDA:
      return NoteDate(record.zda.year, record.zda.month, record.zda.day, record.zda.timeOfDay);
    case C_RawDataMessage::eNmeaRMC:
      if (IsVoid(record.rmc.status)) return NoteTimeOfDay(record.rmc.timeOfDay);
      return NoteDate(record.rmc.year, record.rmc.month, record.rmc.day, record.rmc.timeOfDay);
    default:
      return;
  }
}

void C_StreamClock::NoteTimeOfDay(double secondsOfDay) {
  if (!IsTimeOfDay(secondsOfDay)) return;
  const double step = m_secondsOfDay ? secondsOfDay - *m_secondsOfDay : 0;
  if (step < -kSecondsPerDay / 2) ++m_day;  // over midnight
  if (step > kSecondsPerDay / 2) --m_day;   // a late sentence of the day before
  m_secondsOfDay = secondsOfDay;
}

void C_StreamClock::NoteDate(unsigned short year, unsigned char month, unsigned char day, double secondsOfDay) {
  NoteTimeOfDay(secondsOfDay);
  if (!IsTimeOfDay(secondsOfDay) || !IsRealDate(year, month, day)) return;
  const unsigned int mjd = C_GnssTime::GregorianToMJD(year, month, day);
  if (!m_mjdOfDay0) m_mjdOfDay0 = mjd - static_cast<unsigned int>(m_day);
  m_day = static_cast<int>(mjd - *m_mjdOfDay0);
  if (m_firstDate) return;
  C_GnssTime time;
  C_GnssTime::GregorianToGps(year, month, day, 0, 0, secondsOfDay, time.m_week, time.m_secOfWeek);
  m_firstDate = C_GnssTime(time.m_week, time.m_secOfWeek, ALGO::GNSS_GPS);
}

double C_StreamClock::Seconds() const {
  if (!m_secondsOfDay) return std::numeric_limits<double>::quiet_NaN();
  return m_day * kSecondsPerDay + *m_secondsOfDay;
}

C_TimeText C_StreamClock::Text(double seconds) const {
  if (!std::isfinite(seconds)) return {};
  const double day = std::floor(seconds / kSecondsPerDay);
  const double secondsOfDay = seconds - day * kSecondsPerDay;
  if (!m_mjdOfDay0) return C_TimeText::TimeOfDay(secondsOfDay);
  return C_TimeText::Utc(*m_mjdOfDay0 + static_cast<unsigned int>(static_cast<int>(day)), secondsOfDay);
}

}  // namespace Host
