#include "geo/Matrix.h"

#include <unistd.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <limits>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/CLocale.h"
#include "tests/Cases.h"

namespace {

using Eigen::MatrixXd;

constexpr char kQuickMessage[] = "\nProblem encountered C_Matrix::QuickInvMat() - Matrix is singular.\n\n";
constexpr char kPivotMessage[] = "\nProblem encountered when inverting matrix - It looks to be singular.\n\n";
constexpr char kSymMessage[] = "\nProblem encountered C_Matrix::SymInv() - Matrix is singular.\n\n";

C_Matrix FromEigen(const MatrixXd& source, bool inversionWork = false) {
  const auto rows = static_cast<unsigned int>(source.rows());
  const auto cols = static_cast<unsigned int>(source.cols());
  C_Matrix matrix(rows, cols, rows, cols, inversionWork);
  for (unsigned int i = 0; i < rows; ++i)
    for (unsigned int j = 0; j < cols; ++j) matrix(i, j) = source(i, j);
  return matrix;
}

MatrixXd ToEigen(const C_Matrix& source) {
  return MatrixXd::NullaryExpr(source.Rows(), source.Cols(), [&](Eigen::Index i, Eigen::Index j) {
    return source(static_cast<unsigned int>(i), static_cast<unsigned int>(j));
  });
}

MatrixXd Random(Eigen::Index rows, Eigen::Index cols) {
  static std::mt19937_64 generator(20240601);
  return MatrixXd::NullaryExpr(rows, cols, [] { return static_cast<double>(generator() >> 11) * 0x1p-52 - 1; });
}

// ---- storage and values --------------------------------------------------------------------------------------------

struct S_StorageCase {
  const char* name;
  unsigned int maxRows, maxCols, rows, cols;  // asked for
  bool ownsHeap;
  unsigned int actualRows, actualCols;
};

// clang-format off
constexpr S_StorageCase kStorageCases[] = {
    {"Inline4x4",       4,   4, 4, 4,  false, 4,  4},
    {"Inline1x16",      1,  16, 1, 16, false, 1, 16},
    {"Inline3x5",       3,   5, 2, 2,  false, 2,  2},
    {"Heap5x3",         5,   3, 5, 3,  true,  5,  3},
    {"Heap4x5",         4,   5, 4, 5,  true,  4,  5},
    {"Heap5x1",         5,   1, 5, 1,  true,  5,  1},
    {"Heap1x17",        1,  17, 1, 17, true,  1, 17},
    {"CutToCapacity",   3,   3, 7, 2,  false, 3,  2},
    {"NoRowsIsAll",     4,   3, 0, 2,  false, 4,  3},
    {"NoColsIsAll",     4,   3, 2, 0,  false, 4,  3},
    {"NothingAtAll",    0,   0, 0, 0,  false, 0,  0},
    {"NoColumnsOnHeap", 9,   0, 1, 1,  true,  1,  0},
    {"WideButEmpty",    0, ~0U, 1, 1,  false, 0,  1},
};
// clang-format on

TEST_ROWS(MatrixStorage, SizesPlaceAndZeros, kStorageCases, c) {
  for (const bool inversionWork : {false, true}) {
    const C_Matrix matrix(c.maxRows, c.maxCols, c.rows, c.cols, inversionWork);
    EXPECT_EQ(matrix.OwnsHeap(), c.ownsHeap);
    EXPECT_EQ(std::pair(matrix.MaxRows(), matrix.MaxCols()), std::pair(c.maxRows, c.maxCols));
    EXPECT_EQ(std::pair(matrix.Rows(), matrix.Cols()), std::pair(c.actualRows, c.actualCols));
    EXPECT_EQ(ToEigen(matrix), MatrixXd::Zero(matrix.Rows(), matrix.Cols()));
  }
}

TEST(Matrix, RefusesCapacitiesBeyondTheLimits) {
  EXPECT_THROW(C_Matrix(0x4000, 0x4000), std::bad_array_new_length);    // 0x10000000 elements
  EXPECT_THROW(C_Matrix(0x10000, 0x10000), std::bad_array_new_length);  // 2^32: 0 in 32 bits
  EXPECT_THROW(C_Matrix(0x20000000, 0), std::bad_array_new_length);     // rows alone
}

// Copies and moves behave as those of a number, inline and on the heap, with and without work space.
TEST(Matrix, IsAValue) {
  for (const unsigned int n : {3U, 6U}) {
    for (const bool inversionWork : {false, true}) {
      MatrixXd values = Random(n, n);
      if (inversionWork) values(0, 0) = 0;  // cannot be inverted without
      C_Matrix original = FromEigen(values, inversionWork);
      C_Matrix copy(original);
      original(1, 2) = 99;
      EXPECT_EQ(ToEigen(copy), values);
      C_Matrix& self = copy;
      copy = self;
      copy = std::move(self);
      EXPECT_EQ(ToEigen(copy), values);
      C_Matrix moved(std::move(copy));
      EXPECT_EQ(ToEigen(moved), values);
      for (C_Matrix target : {C_Matrix(2, 2), C_Matrix(9, 9, 1, 1, true)}) {
        target = moved;
        EXPECT_EQ(ToEigen(target), values);
        EXPECT_EQ(target.MaxRows(), n);
        EXPECT_EQ(target.OwnsHeap(), n > 4);
        for (const MatrixXd& inverse :
             {values, MatrixXd(values.inverse())}) {  // there and back: the work space is used twice
          EXPECT_EQ(target.Invert(), 1U);
          EXPECT_LT((ToEigen(target) * inverse - MatrixXd::Identity(n, n)).norm(), 1e-9);
        }
        target = std::move(moved);
        EXPECT_EQ(ToEigen(target), values);
        moved = target;  // what was moved from can be assigned to again
      }
    }
  }
}

TEST(Matrix, MovedFromIsEmpty) {
  for (const unsigned int n : {3U, 6U}) {
    C_Matrix source(n, n), result(2, 2);
    const C_Matrix target(std::move(source));
    EXPECT_EQ(source.MaxRows() + source.MaxCols() + C_Matrix(source).Rows() + source.Invert() + source.SymInv(), 0U);
    EXPECT_FALSE(source.Resize(1, 1));
    source.SetR1(1);
    source.SetIdentity();
    C_Matrix::Multiply(source, source, result, false);
  }
}

TEST(Matrix, ResizeKeepsWhatBothSizesHave) {
  const MatrixXd values = Random(5, 6);
  const std::pair<unsigned int, unsigned int> sizes[] = {{2, 3}, {2, 6}, {5, 1}, {4, 4}, {1, 1}, {5, 6}};
  for (const auto& [fromRows, fromCols] : sizes) {
    for (const auto& [rows, cols] : sizes) {
      C_Matrix matrix = FromEigen(values);
      ASSERT_TRUE(matrix.Resize(fromRows, fromCols) && matrix.Resize(rows, cols));
      MatrixXd expected = MatrixXd::Zero(rows, cols);
      const Eigen::Index keptRows = std::min(fromRows, rows), keptCols = std::min(fromCols, cols);
      expected.topLeftCorner(keptRows, keptCols) = values.topLeftCorner(keptRows, keptCols);
      EXPECT_EQ(ToEigen(matrix), expected) << fromRows << 'x' << fromCols << " to " << rows << 'x' << cols;
      for (const auto& [badRows, badCols] : {std::pair(0U, 1U), {1U, 0U}, {6U, 1U}, {1U, 7U}})
        EXPECT_FALSE(matrix.Resize(badRows, badCols));
      EXPECT_EQ(ToEigen(matrix), expected);
    }
  }
}

// ---- arithmetic ----------------------------------------------------------------------------------------------------

TEST(Matrix, RotatesTheAxes) {
  const double angle = 0.5, c = std::cos(angle), s = std::sin(angle);
  const struct {
    void (*set)(C_Matrix&, double);
    Eigen::Matrix3d expected;
  } cases[] = {
      {[](C_Matrix& m, double theta) { m.SetR1(theta); }, (Eigen::Matrix3d() << 1, 0, 0, 0, c, s, 0, -s, c).finished()},
      {[](C_Matrix& m, double theta) { m.SetR2(theta); }, (Eigen::Matrix3d() << c, 0, -s, 0, 1, 0, s, 0, c).finished()},
      {[](C_Matrix& m, double theta) { m.SetR3(theta); }, (Eigen::Matrix3d() << c, s, 0, -s, c, 0, 0, 0, 1).finished()},
      {[](C_Matrix& m, double) { m.SetReflectedIdentity(); }, Eigen::Vector3d(1, -1, 1).asDiagonal()},
  };
  for (const auto& rotation : cases) {
    C_Matrix roomy(5, 4, 2, 2), small(2, 9);
    roomy(1, 1) = small(1, 8) = 7;
    rotation.set(roomy, angle);
    EXPECT_EQ(ToEigen(roomy), rotation.expected);
    rotation.set(small, angle);
    EXPECT_EQ(small.Cols(), 9U);
    EXPECT_EQ(small(1, 8), 7.0);
  }
}

TEST(Matrix, IdentityNeedsASquare) {
  C_Matrix matrix(4, 4, 2, 2);
  matrix.SetIdentity();
  EXPECT_EQ(ToEigen(matrix), MatrixXd::Identity(2, 2));
  matrix.Resize(2, 3);
  matrix(0, 2) = 5;
  matrix.SetIdentity();
  EXPECT_EQ(matrix(0, 2), 5.0);
}

struct S_OperationCase {
  const char* name;
  int aRows, aCols, bRows, bCols;
  void (*run)(const C_Matrix& a, const C_Matrix& b, C_Matrix& c);
  std::function<MatrixXd(const MatrixXd&, const MatrixXd&)> expected;  // empty: nothing must be done
};

constexpr auto kMultiply = [](const C_Matrix& a, const C_Matrix& b, C_Matrix& c) {
  C_Matrix::Multiply(a, b, c, false);
};
constexpr auto kMultiplyByTranspose = [](const C_Matrix& a, const C_Matrix& b, C_Matrix& c) {
  C_Matrix::MultiplyByTranspose(a, b, c, false);
};
constexpr auto kTranspose = [](const C_Matrix& a, const C_Matrix&, C_Matrix& c) { C_Matrix::Transpose(a, c); };

const S_OperationCase kOperationCases[] = {
    {"Product3x3", 3, 3, 3, 3, kMultiply, [](auto& a, auto& b) { return a * b; }},
    {"ProductOblong", 2, 5, 5, 3, kMultiply, [](auto& a, auto& b) { return a * b; }},
    {"ProductLarge", 7, 6, 6, 8, kMultiply, [](auto& a, auto& b) { return a * b; }},
    {"ProductInnerDiffers", 3, 2, 3, 3, kMultiply, {}},
    {"ByTranspose3x3", 3, 3, 3, 3, kMultiplyByTranspose, [](auto& a, auto& b) { return a * b.transpose(); }},
    {"ByTransposeOblong", 2, 5, 3, 5, kMultiplyByTranspose, [](auto& a, auto& b) { return a * b.transpose(); }},
    {"ByTransposeInnerDiffers", 3, 2, 2, 3, kMultiplyByTranspose, {}},
    {"Sum", 4, 5, 4, 5, C_Matrix::Add, [](auto& a, auto& b) { return a + b; }},
    {"SumOfOtherRows", 4, 5, 3, 5, C_Matrix::Add, {}},
    {"SumOfOtherColumns", 4, 5, 4, 4, C_Matrix::Add, {}},
    {"Difference", 4, 5, 4, 5, C_Matrix::Subtract, [](auto& a, auto& b) { return a - b; }},
    {"DifferenceOfOtherRows", 4, 5, 3, 5, C_Matrix::Subtract, {}},
    {"DifferenceOfOtherColumns", 4, 5, 4, 4, C_Matrix::Subtract, {}},
    {"Transpose", 2, 5, 1, 1, kTranspose, [](auto& a, auto&) { return a.transpose(); }},
};

class MatrixOperation : public testing::TestWithParam<S_OperationCase> {};

TEST_P(MatrixOperation, AgreesWithEigen) {
  const S_OperationCase& c = GetParam();
  const MatrixXd a = Random(c.aRows, c.aCols), b = Random(c.bRows, c.bCols);
  const MatrixXd before = Random(1, 1);
  const MatrixXd expected = c.expected ? c.expected(a, b) : before;
  C_Matrix result(9, 9, 1, 1);
  result(0, 0) = before(0, 0);
  c.run(FromEigen(a), FromEigen(b), result);
  ASSERT_EQ(result.Rows(), expected.rows());
  ASSERT_EQ(result.Cols(), expected.cols());
  EXPECT_LT((ToEigen(result) - expected).norm(), 1e-14);

  C_Matrix tooSmall = FromEigen(before);
  c.run(FromEigen(a), FromEigen(b), tooSmall);
  EXPECT_EQ(ToEigen(tooSmall), before);
}

TEST_P(MatrixOperation, MayWriteOverItsOperands) {
  const S_OperationCase& c = GetParam();
  if (!c.expected) return;
  const MatrixXd a = Random(c.aRows, c.aCols), b = Random(c.bRows, c.bCols);
  C_Matrix overA(9, 9), overB(9, 9);
  C_Matrix::Add(FromEigen(a), FromEigen(0 * a), overA);
  C_Matrix::Add(FromEigen(b), FromEigen(0 * b), overB);
  c.run(overA, FromEigen(b), overA);
  c.run(FromEigen(a), overB, overB);
  EXPECT_LT((ToEigen(overA) - c.expected(a, b)).norm(), 1e-14);
  EXPECT_LT((ToEigen(overB) - c.expected(a, b)).norm(), 1e-14);
  if (c.aRows != c.aCols || c.aRows != c.bRows) return;
  C_Matrix both = FromEigen(a);
  c.run(both, both, both);
  EXPECT_LT((ToEigen(both) - c.expected(a, a)).norm(), 1e-14);
}

INSTANTIATE_TEST_SUITE_P(All, MatrixOperation, testing::ValuesIn(kOperationCases), CaseName<S_OperationCase>);

TEST(Matrix, AccumulatesOnlyIntoTheProductsSize) {
  const MatrixXd a = Random(2, 3), b = Random(3, 4), bt = b.transpose(), start = Random(2, 4);
  C_Matrix c = FromEigen(start), byTranspose = FromEigen(start), otherSize(4, 4);
  C_Matrix::Multiply(FromEigen(a), FromEigen(b), c, true);
  C_Matrix::MultiplyByTranspose(FromEigen(a), FromEigen(bt), byTranspose, true);
  C_Matrix::Multiply(FromEigen(a), FromEigen(b), otherSize, true);
  EXPECT_LT((ToEigen(c) - start - a * b).norm(), 1e-15);
  EXPECT_LT((ToEigen(byTranspose) - start - a * b).norm(), 1e-15);
  EXPECT_EQ(ToEigen(otherSize), MatrixXd::Zero(4, 4));
}

// ---- inversion -----------------------------------------------------------------------------------------------------

struct S_InversionCase {
  const char* name;
  bool symmetric;
  bool pivoting;
  unsigned int (*invert)(C_Matrix&);
  double largestCondition;  // up to which the method must do
};

constexpr S_InversionCase kInversionCases[] = {
    {"Pivoting", false, true, [](C_Matrix& m) { return m.Invert(); }, 1e12},
    {"Symmetric", true, false, [](C_Matrix& m) { return m.SymInv(); }, 1e12},
    {"FastOnDefiniteMatrices", true, false, [](C_Matrix& m) { return m.Invert(); }, 1e2},
};

// Matrices of known condition: singular values 1 to 1/condition between two random orthogonal factors.
TEST_ROWS(MatrixInversion, ErrorGrowsWithTheConditionOnly, kInversionCases, row) {
  using LongMatrix = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;
  const auto orthogonal = [](Eigen::Index n) -> MatrixXd { return Random(n, n).householderQr().householderQ(); };
  for (const unsigned int n : {3U, 4U, 5U, 8U, 16U, 64U}) {
    for (double condition = 1; condition <= row.largestCondition; condition *= 100) {
      const auto values = Eigen::ArrayXd::LinSpaced(n, 0, -std::log(condition)).exp().matrix();
      const MatrixXd left = orthogonal(n), right = row.symmetric ? MatrixXd(left.transpose()) : orthogonal(n);
      MatrixXd matrix = left * values.asDiagonal() * right;
      if (row.symmetric) matrix = ((matrix + matrix.transpose()) / 2).eval();
      const LongMatrix exact = matrix.cast<long double>().fullPivLu().inverse();
      C_Matrix inverse = FromEigen(matrix, row.pivoting);
      ASSERT_EQ(row.invert(inverse), 1U);
      if (row.symmetric && row.largestCondition > 1e2) {  // SymInv
        EXPECT_EQ(ToEigen(inverse), ToEigen(inverse).transpose());
      }
      const LongMatrix error = ToEigen(inverse).cast<long double>() - exact;
      EXPECT_LT(error.cwiseAbs().maxCoeff() / exact.cwiseAbs().maxCoeff(), 2e-16 * n * condition)
          << n << 'x' << n << ", condition " << condition;
    }
  }
}

enum class eMethod { eFast, ePivoting, eSymmetric };

struct S_SingularCase {
  const char* name;
  eMethod method;
  MatrixXd matrix;
  unsigned int result;
  std::string printed;
};

const double kNan = std::numeric_limits<double>::quiet_NaN();

MatrixXd Square(std::initializer_list<double> elements) {
  const auto n = static_cast<Eigen::Index>(std::lround(std::sqrt(static_cast<double>(elements.size()))));
  return Eigen::Map<const Eigen::Matrix<double, -1, -1, Eigen::RowMajor>>(elements.begin(), n, n);
}

const S_SingularCase kSingularCases[] = {
    {"FastPivotProductTooSmall", eMethod::eFast, Square({1e-50, 0, 0, 1e-50}), 0, kQuickMessage},
    {"FastPivotProductJustEnough", eMethod::eFast, Square({1e-45, 0, 0, 1.1e-45}), 1, ""},
    {"FastPivotAtTheThreshold", eMethod::eFast, Square({1e-90}), 0, kQuickMessage},
    {"FastSmallThenLargePivot", eMethod::eFast, Square({1e-91, 0, 0, 1e50}), 0, kQuickMessage},
    {"FastDoesNotPivot", eMethod::eFast, Square({0, 1, 1, 0}), 0, kQuickMessage},
    {"FastNegativePivots", eMethod::eFast, Square({-2, 0, 0, 3}), 1, ""},
    {"FastNan", eMethod::eFast, Square({1, 0, 0, kNan}), 0, kQuickMessage},
    {"PivotingPivots", eMethod::ePivoting, Square({0, 1, 1, 0}), 1, ""},
    {"PivotingTinyElements", eMethod::ePivoting, Square({1e-200, 0, 0, 1e-200}), 1, ""},
    {"PivotingZeroLastColumn", eMethod::ePivoting, Square({1, 0, 0, 0}), 1, kPivotMessage},
    {"PivotingDependentRows", eMethod::ePivoting, Square({1, 2, 2, 4}), 1, kPivotMessage},
    {"PivotingOneZero", eMethod::ePivoting, Square({0}), 1, kPivotMessage},
    {"PivotingAllZeros", eMethod::ePivoting, Square({0, 0, 0, 0, 0, 0, 0, 0, 0}), 1,
     std::string(kPivotMessage) + kPivotMessage + kPivotMessage},
    {"PivotingNan", eMethod::ePivoting, Square({kNan}), 1, kPivotMessage},
    {"SymmetricZero", eMethod::eSymmetric, Square({0}), 0, kSymMessage},
    {"SymmetricNegative", eMethod::eSymmetric, Square({1, 2, 2, 1}), 0, kSymMessage},
    {"SymmetricPivotAtTheThreshold", eMethod::eSymmetric, Square({1e-90}), 1, ""},
    {"SymmetricReadsTheUpperTriangle", eMethod::eSymmetric, Square({4, 0, 77, 4}), 1, ""},
    {"FastOblong", eMethod::eFast, MatrixXd::Ones(2, 3), 0, ""},
    {"PivotingOblong", eMethod::ePivoting, MatrixXd::Ones(2, 3), 0, ""},
    {"SymmetricOblong", eMethod::eSymmetric, MatrixXd::Ones(2, 3), 0, ""},
};

TEST_ROWS(MatrixSingular, ResultAndMessage, kSingularCases, c) {
  C_Matrix matrix = FromEigen(c.matrix, c.method == eMethod::ePivoting);
  testing::internal::CaptureStdout();
  const unsigned int result = c.method == eMethod::eSymmetric ? matrix.SymInv() : matrix.Invert();
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), c.printed);
  EXPECT_EQ(result, c.result);
  if (c.matrix.rows() != c.matrix.cols()) {
    EXPECT_EQ(ToEigen(matrix), c.matrix);
  }
}

TEST(Matrix, QuickInvMatTakesAnyThreshold) {
  double block[] = {0.5, 0, 0, 0.5};
  testing::internal::CaptureStdout();
  EXPECT_EQ(C_Matrix::QuickInvMat(nullptr, 0, 1), 1U);
  EXPECT_EQ(C_Matrix::QuickInvMat(nullptr, 2, 1), 0U);
  EXPECT_EQ(C_Matrix::QuickInvMat(block, 2, 0.2), 1U);
  EXPECT_EQ(C_Matrix::QuickInvMat(block, 2, 4), 0U);  // now diag(2, 2): the product is not above 4
  EXPECT_EQ(testing::internal::GetCapturedStdout(), kQuickMessage);
}

// ---- text ----------------------------------------------------------------------------------------------------------

std::string TemporaryFile() { return testing::TempDir() + "velagnss_matrix_" + std::to_string(::getpid()) + ".txt"; }

std::string ReadFile(const std::string& name) {
  std::ostringstream text;
  text << std::ifstream(name).rdbuf();
  return text.str();
}

TEST(MatrixText, DumpsWhatPrintfWouldPrint) {
  const std::string name = TemporaryFile();
  const double values[] = {1.0, -1.0 / 3, 1e300, -0.0, 5e-324, HUGE_VAL, -HUGE_VAL, kNan, -kNan, 123456789.0123456789};
  C_Matrix matrix(10, 1);
  std::string expected = "heading %d\n";
  for (unsigned int i = 0; i < 10; ++i) {
    const CLocale locale;
    char field[400];
    std::snprintf(field, sizeof(field), " %40.15f\n", matrix(i, 0) = values[i]);
    expected += field;
  }
  ASSERT_TRUE(matrix.Dump(name.c_str(), "heading %d\n", false));
  EXPECT_EQ(ReadFile(name), expected);
  ASSERT_TRUE(C_Matrix(0, 0).Dump(name.c_str(), "end", true));
  EXPECT_EQ(ReadFile(name), expected + "end");
  C_Matrix identity(2, 2);
  identity.SetIdentity();
  ASSERT_TRUE(identity.Dump(name.c_str(), "", false));
  const std::string one = std::string(24, ' ') + "1.000000000000000", zero = std::string(24, ' ') + "0.000000000000000";
  EXPECT_EQ(ReadFile(name), one + zero + "\n" + zero + one + "\n");
  std::remove(name.c_str());
}

TEST(MatrixText, ReportsFilesThatCannotBe) {
  C_Matrix matrix(2, 2);
  EXPECT_FALSE(matrix.Dump(nullptr, "", false) || matrix.Dump("/nowhere/at/all", "", false));
  EXPECT_FALSE(matrix.Dump(TemporaryFile().c_str(), nullptr, false));
  EXPECT_FALSE(matrix.Dump("/dev/full", "", false));
  EXPECT_FALSE(matrix.Load(nullptr) || matrix.Load("/nowhere/at/all") || matrix.Load("/"));
}

struct S_LoadCase {
  const char* name;
  std::string text;
  unsigned int rows;  // 0: refused
  std::vector<double> elements;
};

constexpr std::size_t kLongestLine = 4096 + 1024 * 6;  // of a matrix of up to six columns

// clang-format off
const S_LoadCase kLoadCases[] = {
    {"NoLineEndAtTheEnd", "1 2\n3 4", 2, {1, 2, 3, 4}},
    {"TabsAndCarriageReturns", "\t1\t 2\r\n3 4\r\n", 2, {1, 2, 3, 4}},
    {"HeadingsAndEmptyLines", "Normal matrix\nx y\n\n1 2\n \n3 4\n\n", 2, {1, 2, 3, 4}},
    {"AllFormsOfNumbers", "+1 -.5 5. 1e2 1E-2 0x1p4\n", 1, {1, -0.5, 5, 100, 0.01, 16}},
    {"Infinities", "inf -INFINITY", 1, {HUGE_VAL, -HUGE_VAL}},
    {"PositiveExponents", "1e+2 0x1p+4 0." + std::string(400, '0') + "1e+402 1e-402", 1, {100, 16, 10, 0}},
    {"LongFractions", "0." + std::string(30, '3') + " 1." + std::string(400, '0') + "1", 1, {1.0 / 3, 1}},
    {"LongestLine", std::string(kLongestLine - 1, ' ') + "7\n8", 2, {7, 8}},
    {"LongestLineAtTheEnd", "8\n" + std::string(kLongestLine - 1, ' ') + "7", 2, {8, 7}},
    {"LineTooLongAtTheEnd", "8\n" + std::string(kLongestLine, ' ') + "7", 0, {}},
    {"HeadingTooLong", std::string(kLongestLine + 1, 'x') + "\n8", 0, {}},
    {"TooSmallIsZero", "1e-400 -1e-99999999999999999999 0x1p-2000 0." + std::string(400, '0') + "1", 1, {0, 0, 0, 0}},
    {"FullCapacity", "1 1 1 1 1 1\n2 2 2 2 2 2\n3 3 3 3 3 3", 3, {1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3}},
    {"TooManyRows", "1\n1\n1\n1\n", 0, {}},
    {"TooManyColumns", "1 1 1 1 1 1 1\n", 0, {}},
    {"RaggedRows", "1 2\n3\n", 0, {}},
    {"TextBehindTheRows", "1 2\nend\n", 0, {}},
    {"NumberInTheHeading", "matrix 2\n1 2\n", 0, {}},
    {"Empty", "", 0, {}},
    {"HeadingOnly", "1x\nnothing\n", 0, {}},
    {"TooLarge", "1e400", 0, {}},
    {"TooLargeWithoutExponent", "1" + std::string(400, '0'), 0, {}},
    {"TooLargeHexadecimal", "0x1p2000", 0, {}},
    {"DecimalComma", "1,5 2\n", 0, {}},
    {"CutExponent", "1 1e\n", 0, {}},
    {"TwoSigns", "1 +-1\n", 0, {}},
    {"Nul", std::string("1 2\0 3\n", 7), 0, {}},
};
// clang-format on

TEST_ROWS(MatrixLoad, AllOrNothing, kLoadCases, c) {
  const std::string name = TemporaryFile();
  std::ofstream(name, std::ios::binary) << c.text;
  C_Matrix matrix(3, 6, 1, 1);
  matrix(0, 0) = 42;
  EXPECT_EQ(matrix.Load(name.c_str()), c.rows != 0);
  std::remove(name.c_str());
  const std::vector<double> expected = c.rows != 0 ? c.elements : std::vector<double>{42};
  ASSERT_EQ(matrix.Rows(), std::max(c.rows, 1U));
  ASSERT_EQ(matrix.Rows() * matrix.Cols(), expected.size());
  for (unsigned int i = 0; i < expected.size(); ++i)
    EXPECT_EQ(matrix(i / matrix.Cols(), i % matrix.Cols()), expected[i]) << i;
}

}  // namespace
