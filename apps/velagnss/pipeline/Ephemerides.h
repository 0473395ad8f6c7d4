// Ephemerides of any protocol on their way to the store.
#ifndef VELAGNSS_APPS_EPHEMERIDES_H
#define VELAGNSS_APPS_EPHEMERIDES_H

#include "positioning/EphemerisStore.h"
#include "stream/RecordDecoder.h"

namespace Host {

// Ignores all other records.
inline void NoteEphemeris(velagnss::EphemerisStore& store, const velagnss::DecodedFrame& decoded) {
  const auto note = [&](const auto& record) {
    if constexpr (requires { store.Note(record, true); })
      store.Note(record, !decoded.isWeekUnresolved);
    else if constexpr (requires { store.Note(record.ephemeris, true); })  // of GLONASS, within its message
      store.Note(record.ephemeris, !decoded.isWeekUnresolved);
  };
  std::visit(note, decoded.record);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_EPHEMERIDES_H
