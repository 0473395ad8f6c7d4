// A dense matrix of doubles with a fixed capacity and a current size within it.
//
// Made for small work: a matrix whose capacity is at most 16 elements in fewer than five rows keeps them inside the
// object and allocates nothing, so that 3x3 rotations and covariances cost no more than their arithmetic. Larger ones
// own one block on the heap. The capacity is settled at construction; results are written into matrices that the
// caller provides, and an operation whose result does not fit does nothing.
//
//   C_Matrix rotation(3, 3), covariance(3, 3), product(3, 3);
//   rotation.SetR3(longitude);
//   C_Matrix::Multiply(rotation, covariance, product, false);             // product = rotation * covariance
//   C_Matrix::MultiplyByTranspose(product, rotation, covariance, false);  // covariance = product * rotation'
//
// Singular input is reported by the result of the inversions and, for people, by a line on standard output. The only
// exceptions are those of memory: std::bad_alloc, and std::bad_array_new_length for a capacity beyond the limits.
#ifndef VELAGNSS_GEO_MATRIX_H
#define VELAGNSS_GEO_MATRIX_H

#include <memory>

#include "velagnss_export.h"

class VELAGNSS_API C_Matrix {
 public:
  // A matrix of zeros for up to `maxRows` x `maxCols` elements. Its current size is `rows` x `cols`, each cut to the
  // capacity; when either is 0 it is the full capacity in both directions. `inversionWork` adds what the pivoting form
  // of Invert() needs: a second matrix, a block of the capacity's size and a list of rows.
  //
  // Throws std::bad_array_new_length for more than 0xFFFFFFF elements, or 0x1FFFFFFF rows, on the heap.
  C_Matrix(unsigned int maxRows, unsigned int maxCols, unsigned int rows = 0, unsigned int cols = 0,
           bool inversionWork = false);

  // Copies are independent and whole: capacity, current size, elements, and work space where the source has it.
  // A matrix that was moved from has no elements and capacity 0; it may be assigned to or destroyed.
  C_Matrix(const C_Matrix& other);
  C_Matrix(C_Matrix&& other) noexcept;
  C_Matrix& operator=(const C_Matrix& other);
  C_Matrix& operator=(C_Matrix&& other) noexcept;
  ~C_Matrix();

  // Current size, and the capacity that it can grow to.
  unsigned int Rows() const { return m_rows; }
  unsigned int Cols() const { return m_cols; }
  unsigned int MaxRows() const { return m_maxRows; }
  unsigned int MaxCols() const { return m_maxCols; }

  // False when the elements are kept inside the object.
  bool OwnsHeap() const { return m_heapData != nullptr; }

  // Element in `row` < Rows() and `col` < Cols(); not checked.
  double& operator()(unsigned int row, unsigned int col) { return m_rowTable[row][col]; }
  const double& operator()(unsigned int row, unsigned int col) const { return m_rowTable[row][col]; }

  // Changes the current size. Elements that both sizes have keep their values, the others are 0. False, and nothing
  // done, when a dimension is 0 or beyond the capacity.
  bool Resize(unsigned int rows, unsigned int cols);

  // Ones on the diagonal, zeros elsewhere, in the current size. A matrix that is not square stays as it is.
  void SetIdentity();

  // The operations below make the matrix 3x3 first, and do nothing when its capacity is smaller.
  //
  // The identity with -1 in the middle: it turns the second axis round.
  void SetReflectedIdentity();

  // Rotations of the axes about the first, second or third one by `theta` radians, counter-clockwise as seen from the
  // axis' positive end:
  //
  //        [1   0  0]        [c  0  -s]        [ c  s  0]
  //   R1 = [0   c  s]   R2 = [0  1   0]   R3 = [-s  c  0]   with c = cos(theta), s = sin(theta)
  //        [0  -s  c]        [s  0   c]        [ 0  0  1]
  //
  // A `theta` that is not finite gives NaN in the places of c and s.
  void SetR1(double theta);
  void SetR2(double theta);
  void SetR3(double theta);

  // c = a * b, or c = c + a * b when `accumulate` is set; MultiplyByTranspose takes the transpose of b instead.
  // Without `accumulate` c gets the product's size if its capacity allows; with it c must have that size already.
  // Nothing is done when c is too small or the inner sizes differ. c may be the same object as a or b.
  static void Multiply(const C_Matrix& a, const C_Matrix& b, C_Matrix& c, bool accumulate);
  static void MultiplyByTranspose(const C_Matrix& a, const C_Matrix& b, C_Matrix& c, bool accumulate);

  // c = a + b, c = a - b and c = transpose of a. c gets the result's size if its capacity allows; nothing is done when
  // it does not, or when the sizes of a and b differ. c may be the same object as a or b.
  static void Add(const C_Matrix& a, const C_Matrix& b, C_Matrix& c);
  static void Subtract(const C_Matrix& a, const C_Matrix& b, C_Matrix& c);
  static void Transpose(const C_Matrix& a, C_Matrix& c);

  // Replaces the matrix by its inverse. 1 on success; 0 for a matrix that is not square or was moved from, which stays
  // as it is. Which method is used was settled at construction:
  //
  //  - without work space QuickInvMat() with the threshold 1e-90, and its result;
  //  - with work space an LU decomposition with scaled partial pivoting: each column's pivot is the element that is
  //    largest in relation to its own row. For each column without a usable pivot it prints
  //    "\nProblem encountered when inverting matrix - It looks to be singular.\n\n" and goes on: the result is 1, the
  //    elements mean nothing.
  //
  // Accuracy with pivoting: no element differs from the exact inverse by more than 2e-16 times n times the condition
  // number, in parts of the largest one (n from 3 to 64, condition numbers up to 1e12).
  unsigned int Invert();

  // Inverts the `n` x `n` elements at `block`, row by row, in place, by Gauss-Jordan elimination without pivoting.
  // 1 on success, also for n = 0. 0 when `block` is null, and when the product of the pivots so far is not above
  // `threshold` (NaN included); then it prints
  // "\nProblem encountered C_Matrix::QuickInvMat() - Matrix is singular.\n\n" and the elements mean nothing.
  //
  // Fast, and as exact as Invert() for matrices whose diagonal dominates. It refuses matrices that have an inverse when
  // a leading square of them has none ([0 1; 1 0]) or when the product becomes small (diag(1e-50, 1e-50)).
  static unsigned int QuickInvMat(double* block, unsigned int n, double threshold);

  // Replaces a symmetric, positive definite matrix by its inverse, by Cholesky factors; only the diagonal and what is
  // above it are read. 1 on success; 0 for a matrix that is not square or was moved from, which stays as it is. When a
  // pivot is below 1e-90 it prints "\nProblem encountered C_Matrix::SymInv() - Matrix is singular.\n\n", the result
  // is 0 and the elements mean nothing.
  //
  // Accuracy as Invert() with pivoting; the result is symmetric to the last bit.
  unsigned int SymInv();

  // Writes `heading` as it is and then a line per row, each element as printf's " %40.15f" in the C locale would print
  // it, whatever the locale. A file that exists is replaced, or continued when `append` is set. False when a name is
  // null or the file cannot be opened or written.
  bool Dump(const char* fileName, const char* heading, bool append) const;

  // Reads what Dump() wrote: a row per line, its numbers separated by blanks, each as scanf's "%lf" in the C locale
  // would read it. Lines before the first row that hold no number are a heading, and skipped; empty lines are ignored.
  // The current size becomes that of the file. False, and the matrix unchanged, when the file cannot be read, holds
  // anything else, no number at all, rows of different length, more rows or columns than the capacity, or a number
  // beyond the range of a double.
  bool Load(const char* fileName);

 private:
  void SetSize(unsigned int rows, unsigned int cols);
  bool FitSize(unsigned int rows, unsigned int cols);
  bool FitProduct(unsigned int rows, unsigned int cols, bool accumulate);
  void TakeFrom(C_Matrix& other) noexcept;
  void SetRotation(unsigned int i, unsigned int j, double theta);
  void DecomposeWithPivots();
  void ChoosePivot(unsigned int k, const double* scale);
  void SolveForIdentity();

  static constexpr unsigned int kInlineElements = 16;
  static constexpr unsigned int kInlineRows = 4;

  unsigned int m_rows = 0;
  unsigned int m_cols = 0;
  unsigned int m_maxRows = 0;
  unsigned int m_maxCols = 0;
  std::unique_ptr<double[]> m_heapData;     // null when the inline buffers are used
  double* m_data = nullptr;                 // elements, row after row without gaps; null when moved from
  std::unique_ptr<double[]> m_luWork;       // right-hand sides of the pivoting inversion; null without work space
  std::unique_ptr<unsigned int[]> m_pivot;  // its order of rows
  std::unique_ptr<C_Matrix> m_workMatrix;   // its result
  double m_inlineData[kInlineElements];     // elements of a small matrix, set as far as its capacity goes
  double* m_inlineRows[kInlineRows];        // row table of a small matrix
  std::unique_ptr<double*[]> m_heapRows;    // row table of any other
  double** m_rowTable = nullptr;            // row i begins at m_data + i * m_cols
};

#endif  // VELAGNSS_GEO_MATRIX_H
