// The sentences of a stream, as they came.
#ifndef VELAGNSS_APPS_SENTENCE_CONVERTER_H
#define VELAGNSS_APPS_SENTENCE_CONVERTER_H

#include <memory>

#include "apps/velagnss/pipeline/TextConsumer.h"

namespace Host {

// The checked NMEA 0183 sentences unchanged, decodable or not, each ended by CR LF.
std::unique_ptr<C_TextConsumer> MakeSentenceConverter();

}  // namespace Host

#endif  // VELAGNSS_APPS_SENTENCE_CONVERTER_H
