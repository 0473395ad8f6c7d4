// The eight sentences that are decoded and encoded, as tables. Internal.
#ifndef VELAGNSS_TEXTPROTO_NMEA_SENTENCES_H
#define VELAGNSS_TEXTPROTO_NMEA_SENTENCES_H

#include "textproto/NMEA_Records.h"
#include "textproto/SentenceRules.h"

extern const S_SentenceRules<S_GGA_Data> kGgaRules;
extern const S_SentenceRules<S_GNS_Data> kGnsRules;
extern const S_SentenceRules<S_ZDA_Data> kZdaRules;
extern const S_SentenceRules<S_GLL_Data> kGllRules;
extern const S_SentenceRules<S_GSV_Data> kGsvRules;
extern const S_SentenceRules<S_GSA_Data> kGsaRules;
extern const S_SentenceRules<S_RMC_Data> kRmcRules;
extern const S_SentenceRules<S_VTG_Data> kVtgRules;

#endif  // VELAGNSS_TEXTPROTO_NMEA_SENTENCES_H
