// cases - tables of test cases: a row is a struct whose member name becomes the test's name.
#ifndef JTPDF_TESTS_SUPPORT_CASES_H
#define JTPDF_TESTS_SUPPORT_CASES_H

#include <gtest/gtest.h>

#include <concepts>
#include <ostream>
#include <string>

template <typename T>
concept NamedRow = requires(T const& row) {
  { row.name } -> std::convertible_to<const char*>;
};

// Failures name the row instead of dumping its bytes.
template <NamedRow Row>
std::ostream& operator<<(std::ostream& out, const Row& row) {
  return out << row.name;
}

template <NamedRow Row>
std::string NameOf(const testing::TestParamInfo<Row>& info) {
  return info.param.name;
}

#endif  // JTPDF_TESTS_SUPPORT_CASES_H
