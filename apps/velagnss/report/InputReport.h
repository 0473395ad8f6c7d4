// What the report says of one input, collected in one pass and in bounded memory.
#ifndef VELAGNSS_APPS_INPUT_REPORT_H
#define VELAGNSS_APPS_INPUT_REPORT_H

#include <vector>

#include "apps/velagnss/account/PointReport.h"
#include "apps/velagnss/account/StreamAccount.h"

namespace Host {

// The collectors begin anew with each input.
struct S_InputReport {
  C_StreamAccount account;
  C_PointReport points;

  // In the order in which a C_RecordRun must feed them.
  std::vector<C_RecordConsumer*> Collectors() { return {&account, &points}; }
};

}  // namespace Host

#endif  // VELAGNSS_APPS_INPUT_REPORT_H
