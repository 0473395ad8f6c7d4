// Helpers for tests that are tables of named cases.
#ifndef VELAGNSS_TESTS_CASES_H
#define VELAGNSS_TESTS_CASES_H

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <type_traits>

#include "tests/ExactCopy.h"

// Names a parameterised test after its case's `name`.
template <class Case>
std::string CaseName(const testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

// A test of each row of a table: TEST_ROWS(Suite, Test, kRows, row) { what holds for `row` }; with a fixture to begin
// from TEST_ROWS_F(Suite, Test, Fixture, kRows, row) { ... }.
#define TEST_ROWS(suite, test, rows, row) TEST_ROWS_F(suite, test, testing::Test, rows, row)
#define TEST_ROWS_F(suite, test, fixture, rows, row)                                    \
  using suite##Row = std::remove_cvref_t<decltype(*std::begin(rows))>;                  \
  class suite : public fixture, public testing::WithParamInterface<suite##Row> {        \
   protected:                                                                           \
    void Check(const suite##Row& row);                                                  \
  };                                                                                    \
  INSTANTIATE_TEST_SUITE_P(Rows, suite, testing::ValuesIn(rows), CaseName<suite##Row>); \
  TEST_P(suite, test) { Check(GetParam()); }                                            \
  void suite::Check(const suite##Row& row)

#endif  // VELAGNSS_TESTS_CASES_H
