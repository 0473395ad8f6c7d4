// Storage, arithmetic and inversion. The order of additions is fixed, as the last bits of every result depend on it.
#include "geo/Matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

namespace {

// On standard output. Whether it can be written there makes no difference to the result.
void Report(const char* message) { static_cast<void>(std::fputs(message, stdout)); }

// Elements stay below 2 GiB and row pointers below 4 GiB.
constexpr std::uint64_t kMaxHeapElements = 0xFFFFFFF;
constexpr unsigned int kMaxHeapRows = 0x1FFFFFFF;

constexpr double kSmallestPivot = 1e-90;  // far below what any covariance or normal equation has

constexpr char kNoPivot[] = "\nProblem encountered when inverting matrix - It looks to be singular.\n\n";
constexpr char kQuickInvMatSingular[] = "\nProblem encountered C_Matrix::QuickInvMat() - Matrix is singular.\n\n";
constexpr char kSymInvSingular[] = "\nProblem encountered C_Matrix::SymInv() - Matrix is singular.\n\n";

// row -= factor * other, `count` elements. All eliminations below come down to this loop.
void SubtractScaled(double* row, double factor, const double* other, unsigned int count) {
  for (unsigned int j = 0; j < count; ++j) row[j] -= factor * other[j];
}

void Divide(double* row, double divisor, unsigned int count) {
  for (unsigned int j = 0; j < count; ++j) row[j] /= divisor;
}

// c = a * b, or c + a * b, with `right`(k, j) for the elements of b; c has the product's size.
template <class Size, class Right>
void FillProduct(const C_Matrix& a, Right right, C_Matrix& c, bool accumulate, Size rows, Size cols, Size inner) {
  for (unsigned int i = 0; i < rows; ++i) {
    for (unsigned int j = 0; j < cols; ++j) {
      double sum = 0.0;
      for (unsigned int k = 0; k < inner; ++k) sum += a(i, k) * right(k, j);
      c(i, j) = accumulate ? c(i, j) + sum : sum;
    }
  }
}

// The same, with loops that the compiler can unroll for 3x3, which nearly all products are.
template <class Right>
void FillProduct(const C_Matrix& a, Right right, C_Matrix& c, bool accumulate) {
  if (c.Rows() == 3 && c.Cols() == 3 && a.Cols() == 3) {
    constexpr std::integral_constant<unsigned int, 3> kThree;
    FillProduct(a, right, c, accumulate, kThree, kThree, kThree);
  } else {
    FillProduct(a, right, c, accumulate, c.Rows(), c.Cols(), a.Cols());
  }
}

// Replaces the symmetric matrix U'U, of which only the upper triangle is read, by its factor U, row by row.
bool CholeskyFactor(double* const* a, unsigned int n) {
  for (unsigned int k = 0; k < n; ++k) {
    if (a[k][k] < kSmallestPivot) return false;
    Divide(a[k] + k, std::sqrt(a[k][k]), n - k);
    for (unsigned int i = k + 1; i < n; ++i) SubtractScaled(a[i] + i, a[k][i], a[k] + i, n - i);
  }
  return true;
}

// Replaces an upper triangle by its inverse, last row first: row i of the inverse is built from those below it.
void InvertUpperTriangle(double* const* u, unsigned int n) {
  for (unsigned int i = n; i-- > 0;) {
    const double diagonal = u[i][i];
    u[i][i] = 1.0;
    for (unsigned int k = n; --k > i;) {  // from the right: left of k is still the factor
      const double factor = std::exchange(u[i][k], 0.0);
      SubtractScaled(u[i] + k, factor, u[k] + k, n - k);
    }
    Divide(u[i] + i, diagonal, n - i);
  }
}

// Replaces an upper triangle V by the symmetric product VV'. Both triangles are filled; element (i, j) with j >= i
// needs only elements from column j on in both rows, so that nothing is overwritten too early.
void MultiplyByOwnTranspose(double* const* v, unsigned int n) {
  for (unsigned int i = 0; i < n; ++i) {
    for (unsigned int j = i; j < n; ++j) {
      double sum = 0.0;
      for (unsigned int k = j; k < n; ++k) sum += v[i][k] * v[j][k];
      v[i][j] = sum;
    }
  }
  for (unsigned int i = 0; i < n; ++i)
    for (unsigned int j = 0; j < i; ++j) v[i][j] = v[j][i];
}

}  // namespace

// ---- storage -------------------------------------------------------------------------------------------------------

C_Matrix::C_Matrix(unsigned int maxRows, unsigned int maxCols, unsigned int rows, unsigned int cols, bool inversionWork)
    : m_maxRows(maxRows), m_maxCols(maxCols), m_data(m_inlineData), m_rowTable(m_inlineRows) {
  // The product in 64 bits: in 32 a large capacity could wrap to a small one.
  const std::uint64_t elements = std::uint64_t{maxRows} * maxCols;
  if (elements > kInlineElements || maxRows > kInlineRows) {
    if (elements > kMaxHeapElements || maxRows > kMaxHeapRows) throw std::bad_array_new_length();
    m_heapData = std::make_unique<double[]>(elements);
    m_heapRows = std::make_unique<double*[]>(maxRows);
    m_data = m_heapData.get();
    m_rowTable = m_heapRows.get();
  } else {
    std::fill_n(m_inlineData, elements, 0.0);
  }
  const bool full = rows == 0 || cols == 0;
  SetSize(full ? maxRows : std::min(rows, maxRows), full ? maxCols : std::min(cols, maxCols));
  if (!inversionWork) return;
  m_workMatrix = std::make_unique<C_Matrix>(maxRows, maxCols);
  m_luWork = std::make_unique<double[]>(elements);
  m_pivot = std::make_unique<unsigned int[]>(maxRows);
}

// `m_pivot` is null without work space, whose contents need no copy: each inversion fills it anew.
C_Matrix::C_Matrix(const C_Matrix& other) : C_Matrix(other.m_maxRows, other.m_maxCols, 0, 0, other.m_pivot != nullptr) {
  SetSize(other.m_rows, other.m_cols);
  std::copy_n(other.m_data, std::size_t{m_rows} * m_cols, m_data);
}

C_Matrix::C_Matrix(C_Matrix&& other) noexcept { TakeFrom(other); }

C_Matrix& C_Matrix::operator=(const C_Matrix& other) {
  if (this != &other) *this = C_Matrix(other);
  return *this;
}

C_Matrix& C_Matrix::operator=(C_Matrix&& other) noexcept {
  if (this != &other) TakeFrom(other);
  return *this;
}

C_Matrix::~C_Matrix() = default;

// Heap blocks change hands; inline elements have to be copied, and the row table must point to this object's.
void C_Matrix::TakeFrom(C_Matrix& other) noexcept {
  m_maxRows = std::exchange(other.m_maxRows, 0);
  m_maxCols = std::exchange(other.m_maxCols, 0);
  m_heapData = std::move(other.m_heapData);
  m_heapRows = std::move(other.m_heapRows);
  m_workMatrix = std::move(other.m_workMatrix);
  m_luWork = std::move(other.m_luWork);
  m_pivot = std::move(other.m_pivot);
  const double* source = std::exchange(other.m_data, nullptr);
  const unsigned int rows = std::exchange(other.m_rows, 0);
  const unsigned int cols = std::exchange(other.m_cols, 0);
  m_data = m_heapData ? m_heapData.get() : source ? m_inlineData : nullptr;
  m_rowTable = m_heapRows ? m_heapRows.get() : m_inlineRows;
  if (m_data == m_inlineData) std::copy_n(source, std::size_t{rows} * cols, m_inlineData);
  SetSize(rows, cols);
}

// Takes a size within the capacity; the elements stay where they are in the block.
void C_Matrix::SetSize(unsigned int rows, unsigned int cols) {
  m_rows = rows;
  m_cols = cols;
  for (unsigned int i = 0; i < rows; ++i) m_rowTable[i] = m_data + std::size_t{i} * cols;
}

// Makes room for a result: false when the capacity is too small.
// The elements keep their places in the block and so mean nothing until they are written.
bool C_Matrix::FitSize(unsigned int rows, unsigned int cols) {
  if (rows > m_maxRows || cols > m_maxCols) return false;
  if (rows != m_rows || cols != m_cols) SetSize(rows, cols);
  return true;
}

bool C_Matrix::FitProduct(unsigned int rows, unsigned int cols, bool accumulate) {
  return accumulate ? rows == m_rows && cols == m_cols : FitSize(rows, cols);
}

bool C_Matrix::Resize(unsigned int rows, unsigned int cols) {
  if (rows == 0 || cols == 0 || rows > m_maxRows || cols > m_maxCols) return false;
  const unsigned int oldCols = m_cols;
  const unsigned int keptRows = std::min(rows, m_rows);
  const unsigned int keptCols = std::min(cols, oldCols);
  for (unsigned int n = 0; n < keptRows; ++n) {
    const std::size_t i = cols > oldCols ? keptRows - 1 - n : n;  // wider rows move to the back: the last one first
    double* const row = m_data + i * cols;
    std::memmove(row, m_data + i * oldCols, keptCols * sizeof(double));
    std::fill(row + keptCols, row + cols, 0.0);
  }
  std::fill(m_data + std::size_t{keptRows} * cols, m_data + std::size_t{rows} * cols, 0.0);
  SetSize(rows, cols);
  return true;
}

// ---- identity and rotations ----------------------------------------------------------------------------------------

void C_Matrix::SetIdentity() {
  if (m_rows != m_cols) return;
  std::fill_n(m_data, std::size_t{m_rows} * m_cols, 0.0);
  for (unsigned int i = 0; i < m_rows; ++i) m_rowTable[i][i] = 1.0;
}

// Turns the left-handed local frame (north, east, up) into a right-handed one and back.
void C_Matrix::SetReflectedIdentity() {
  if (!FitSize(3, 3)) return;
  SetIdentity();
  m_rowTable[1][1] = -1.0;
}

// The rotation in the plane of axes i and j, from i to j.
void C_Matrix::SetRotation(unsigned int i, unsigned int j, double theta) {
  if (!FitSize(3, 3)) return;
  SetIdentity();
  const double c = std::cos(theta);
  const double s = std::sin(theta);
  m_rowTable[i][i] = c;
  m_rowTable[i][j] = s;
  m_rowTable[j][i] = -s;
  m_rowTable[j][j] = c;
}

void C_Matrix::SetR1(double theta) { SetRotation(1, 2, theta); }
void C_Matrix::SetR2(double theta) { SetRotation(2, 0, theta); }
void C_Matrix::SetR3(double theta) { SetRotation(0, 1, theta); }

// ---- arithmetic ----------------------------------------------------------------------------------------------------

void C_Matrix::Multiply(const C_Matrix& a, const C_Matrix& b, C_Matrix& c, bool accumulate) {
  if (a.m_cols != b.m_rows) return;
  // Products read their operands to the end, so that an operand that is also the result is copied first.
  if (&c == &a) return Multiply(C_Matrix(a), b, c, accumulate);
  if (&c == &b) return Multiply(a, C_Matrix(b), c, accumulate);
  if (!c.FitProduct(a.m_rows, b.m_cols, accumulate)) return;
  FillProduct(
      a, [&b](unsigned int k, unsigned int j) { return b(k, j); }, c, accumulate);
}

void C_Matrix::MultiplyByTranspose(const C_Matrix& a, const C_Matrix& b, C_Matrix& c, bool accumulate) {
  if (a.m_cols != b.m_cols) return;
  if (&c == &a) return MultiplyByTranspose(C_Matrix(a), b, c, accumulate);
  if (&c == &b) return MultiplyByTranspose(a, C_Matrix(b), c, accumulate);
  if (!c.FitProduct(a.m_rows, b.m_rows, accumulate)) return;
  FillProduct(
      a, [&b](unsigned int k, unsigned int j) { return b(j, k); }, c, accumulate);
}

void C_Matrix::Add(const C_Matrix& a, const C_Matrix& b, C_Matrix& c) {
  if (a.m_rows != b.m_rows || a.m_cols != b.m_cols || !c.FitSize(a.m_rows, a.m_cols)) return;
  std::transform(a.m_data, a.m_data + std::size_t{a.m_rows} * a.m_cols, b.m_data, c.m_data, std::plus<>());
}

void C_Matrix::Subtract(const C_Matrix& a, const C_Matrix& b, C_Matrix& c) {
  if (a.m_rows != b.m_rows || a.m_cols != b.m_cols || !c.FitSize(a.m_rows, a.m_cols)) return;
  std::transform(a.m_data, a.m_data + std::size_t{a.m_rows} * a.m_cols, b.m_data, c.m_data, std::minus<>());
}

void C_Matrix::Transpose(const C_Matrix& a, C_Matrix& c) {
  if (&c == &a) return Transpose(C_Matrix(a), c);
  if (!c.FitSize(a.m_cols, a.m_rows)) return;
  for (unsigned int i = 0; i < a.m_rows; ++i)
    for (unsigned int j = 0; j < a.m_cols; ++j) c(j, i) = a(i, j);
}

// ---- inversion -----------------------------------------------------------------------------------------------------

unsigned int C_Matrix::Invert() {
  if (m_data == nullptr || m_rows != m_cols) return 0;
  if (m_pivot == nullptr) return QuickInvMat(m_data, m_rows, kSmallestPivot);
  // The work space has the capacity of the matrix, so that any current size fits.
  m_workMatrix->SetSize(m_rows, m_cols);
  DecomposeWithPivots();
  SolveForIdentity();
  std::copy_n(m_workMatrix->m_data, std::size_t{m_rows} * m_cols, m_data);
  return 1;
}

unsigned int C_Matrix::QuickInvMat(double* block, unsigned int n, double threshold) {
  if (n == 0) return 1;
  if (block == nullptr) return 0;
  double determinant = 1.0;
  for (unsigned int k = 0; k < n; ++k) {
    double* const pivotRow = block + std::size_t{k} * n;
    const double pivot = pivotRow[k];
    determinant *= pivot;  // of the leading square so far
    if (!(std::fabs(determinant) > threshold)) {
      Report(kQuickInvMatSingular);
      return 0;
    }
    pivotRow[k] = 1.0;
    Divide(pivotRow, pivot, n);
    for (unsigned int i = 0; i < n; ++i) {
      double* const row = block + std::size_t{i} * n;
      if (i == k || row[k] == 0.0) continue;
      const double factor = std::exchange(row[k], 0.0);
      SubtractScaled(row, factor, pivotRow, n);
    }
  }
  return 1;
}

// LU decomposition in place. Rows stay where they are, `m_pivot` lists them in the order of elimination; the factors
// take the place of the eliminated elements. The result matrix, not yet needed, holds the rows' scales.
void C_Matrix::DecomposeWithPivots() {
  const unsigned int n = m_rows;
  double* const scale = m_workMatrix->m_data;
  for (unsigned int i = 0; i < n; ++i) {
    m_pivot[i] = i;
    scale[i] = 0.0;
    for (unsigned int j = 0; j < n; ++j) scale[i] = std::max(scale[i], std::fabs(m_rowTable[i][j]));
  }
  for (unsigned int k = 0; k < n; ++k) {
    ChoosePivot(k, scale);
    const double* const pivotRow = m_rowTable[m_pivot[k]];
    for (unsigned int i = k + 1; i < n; ++i) {
      double* const row = m_rowTable[m_pivot[i]];
      row[k] /= pivotRow[k];
      SubtractScaled(row + k + 1, row[k], pivotRow + k + 1, n - k - 1);
    }
  }
}

// Moves the row whose element in column `k` is largest in relation to its scale to place `k` of the order. Without such
// a row (all are 0 or NaN) the order stays as it is.
void C_Matrix::ChoosePivot(unsigned int k, const double* scale) {
  unsigned int best = k;
  double bestRatio = 0.0;
  for (unsigned int i = k; i < m_rows; ++i) {
    const double ratio = std::fabs(m_rowTable[m_pivot[i]][k]) / scale[m_pivot[i]];
    if (!(ratio > bestRatio)) continue;
    bestRatio = ratio;
    best = i;
  }
  if (bestRatio == 0.0) Report(kNoPivot);
  std::swap(m_pivot[k], m_pivot[best]);
}

// Solves for all columns of the identity at once, a row at a time: forward with the stored factors, then backward from
// the last row into the result matrix.
void C_Matrix::SolveForIdentity() {
  const unsigned int n = m_rows;
  const auto rightSide = [&](unsigned int i) { return m_luWork.get() + std::size_t{m_pivot[i]} * n; };
  // Filled anew each time: the inversion before has left its results there.
  std::fill_n(m_luWork.get(), std::size_t{n} * n, 0.0);
  for (unsigned int i = 0; i < n; ++i) m_luWork[std::size_t{i} * n + i] = 1.0;
  for (unsigned int k = 0; k < n; ++k)
    for (unsigned int i = k + 1; i < n; ++i) SubtractScaled(rightSide(i), m_rowTable[m_pivot[i]][k], rightSide(k), n);
  for (unsigned int i = n; i-- > 0;) {
    const double* const row = m_rowTable[m_pivot[i]];
    double* const result = std::copy_n(rightSide(i), n, m_workMatrix->m_rowTable[i]) - n;
    for (unsigned int j = i + 1; j < n; ++j) SubtractScaled(result, row[j], m_workMatrix->m_rowTable[j], n);
    Divide(result, row[i], n);
  }
}

unsigned int C_Matrix::SymInv() {
  if (m_data == nullptr || m_rows != m_cols) return 0;
  if (!CholeskyFactor(m_rowTable, m_rows)) {
    Report(kSymInvSingular);
    return 0;
  }
  InvertUpperTriangle(m_rowTable, m_rows);
  MultiplyByOwnTranspose(m_rowTable, m_rows);
  return 1;
}
