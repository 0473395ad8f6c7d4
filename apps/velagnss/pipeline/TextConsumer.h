// A consumer of records that makes text: what `velagnss convert` asks of each format.
#ifndef VELAGNSS_APPS_TEXT_CONSUMER_H
#define VELAGNSS_APPS_TEXT_CONSUMER_H

#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/text/TextMaker.h"

namespace Host {

// Whole lines are appended to `m_text`, at any call.
class C_TextConsumer : public C_RecordConsumer, public C_TextBuffer {};

}  // namespace Host

#endif  // VELAGNSS_APPS_TEXT_CONSUMER_H
