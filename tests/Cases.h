// Helpers for tests that are tables of named cases.
#ifndef VELAGNSS_TESTS_CASES_H
#define VELAGNSS_TESTS_CASES_H

#include <gtest/gtest.h>

#include <string>

#include "tests/ExactCopy.h"

// Names a parameterised test after its case's `name`.
template <class Case>
std::string CaseName(const testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

#endif  // VELAGNSS_TESTS_CASES_H
