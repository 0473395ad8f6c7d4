// A dense matrix of doubles with a fixed capacity and a current size within it.
//
// Designed for small matrices: with a capacity of at most 16 elements in fewer than five rows the elements are inside
// the object and nothing is allocated, so that 3x3 rotations and covariances cost no more than their arithmetic. A
// larger matrix owns memory on the heap. The capacity is fixed at construction. Results are written to matrices that
// the caller provides; an operation whose result does not fit does nothing.
//
//   C_Matrix rotation(3, 3), covariance(3, 3), product(3, 3);
//   rotation.SetR3(longitude);
//   C_Matrix::Multiply(rotation, covariance, product, false);             // product = rotation * covariance
//   C_Matrix::MultiplyByTranspose(product, rotation, covariance, false);  // covariance = product * rotation'
//
// Inversions report singular input by their result and, for the user, by a line on standard output. The only exceptions
// are about memory: std::bad_alloc, and std::bad_array_new_length for a capacity beyond the limits.
#ifndef VELAGNSS_GEO_MATRIX_H
#define VELAGNSS_GEO_MATRIX_H

#include <memory>

#include "velagnss_export.h"

class VELAGNSS_API C_Matrix {
 public:
  // A matrix of zeros for up to `maxRows` x `maxCols` elements. Its current size is `rows` x `cols`, each limited to
  // the capacity; when either is 0, the size is the full capacity in both directions. `inversionWork` adds the work
  // space of the pivoting form of Invert(): a second matrix, a block of the same capacity and a list of rows.
  //
  // Throws std::bad_array_new_length for more than 0xFFFFFFF elements, or 0x1FFFFFFF rows, on the heap.
  C_Matrix(unsigned int maxRows, unsigned int maxCols, unsigned int rows = 0, unsigned int cols = 0,
           bool inversionWork = false);

  // Copies are independent and complete: capacity, current size, elements, and work space if the source has it.
  // A matrix that was moved from has no elements and capacity 0; it can be assigned to.
  C_Matrix(const C_Matrix& other);
  C_Matrix(C_Matrix&& other) noexcept;
  C_Matrix& operator=(const C_Matrix& other);
  C_Matrix& operator=(C_Matrix&& other) noexcept;
  ~C_Matrix();

  // Current size, and the capacity up to which it can grow.
  unsigned int Rows() const { return m_rows; }
  unsigned int Cols() const { return m_cols; }
  unsigned int MaxRows() const { return m_maxRows; }
  unsigned int MaxCols() const { return m_maxCols; }

  // False when the elements are inside the object.
  bool OwnsHeap() const { return m_heapData != nullptr; }

  // Element in `row` < Rows() and `col` < Cols(); not checked.
  double& operator()(unsigned int row, unsigned int col) { return m_rowTable[row][col]; }
  const double& operator()(unsigned int row, unsigned int col) const { return m_rowTable[row][col]; }

  // Changes the current size. Elements that exist in both sizes keep their values, the others are 0. False, with
  // nothing changed, when a dimension is 0 or beyond the capacity.
  bool Resize(unsigned int rows, unsigned int cols);

  // Ones on the diagonal, zeros elsewhere, in the current size. A matrix that is not square stays unchanged.
  void SetIdentity();

  // The next operations first make the matrix 3x3, and do nothing when its capacity is smaller.
  //
  // The identity with -1 in the middle: it reverses the second axis.
  void SetReflectedIdentity();

  // Rotations of the axes about the first, second or third one by `theta` radians, counter-clockwise as seen from the
  // axis' positive end:
  //
  //        [1   0  0]        [c  0  -s]        [ c  s  0]
  //   R1 = [0   c  s]   R2 = [0  1   0]   R3 = [-s  c  0]   with c = cos(theta), s = sin(theta)
  //        [0  -s  c]        [s  0   c]        [ 0  0  1]
  //
  // A `theta` that is not finite gives NaN for c and s.
  void SetR1(double theta);
  void SetR2(double theta);
  void SetR3(double theta);

  // c = a * b, or c = c + a * b with `accumulate`; MultiplyByTranspose uses the transpose of b instead. Without
  // `accumulate` c takes the size of the product if its capacity allows; with it, c must have that size already.
  // Nothing is done when c is too small or the inner sizes differ. c may be the same object as a or b.
  static void Multiply(const C_Matrix& a, const C_Matrix& b, C_Matrix& c, bool accumulate);
  static void MultiplyByTranspose(const C_Matrix& a, const C_Matrix& b, C_Matrix& c, bool accumulate);

  // c = a + b, c = a - b and c = transpose of a. c takes the size of the result if its capacity allows; nothing is done
  // if it does not, or if the sizes of a and b differ. c may be the same object as a or b.
  static void Add(const C_Matrix& a, const C_Matrix& b, C_Matrix& c);
  static void Subtract(const C_Matrix& a, const C_Matrix& b, C_Matrix& c);
  static void Transpose(const C_Matrix& a, C_Matrix& c);

  // Replaces the matrix by its inverse. 1 on success; 0 for a matrix that is not square or was moved from, which stays
  // unchanged. The method was chosen at construction:
  //
  //  - without work space QuickInvMat() with the threshold 1e-90, and its result;
  //  - with work space an LU decomposition with scaled partial pivoting: the pivot of a column is the element that is
  //    largest in relation to its own row. For each column without a usable pivot it prints
  //    "\nProblem encountered when inverting matrix - It looks to be singular.\n\n" and continues: the result is 1, but
  //    the elements are meaningless.
  //
  // Accuracy with pivoting: relative to the largest element of the exact inverse, no element is wrong by more than
  // 2e-16 times n times the condition number (n from 3 to 64, condition numbers up to 1e12).
  unsigned int Invert();

  // Inverts the `n` x `n` elements at `block`, row by row, in place, by Gauss-Jordan elimination without pivoting.
  // 1 on success, also for n = 0. 0 when `block` is null, and when the product of the pivots so far is not above
  // `threshold` (or is NaN); then it prints
  // "\nProblem encountered C_Matrix::QuickInvMat() - Matrix is singular.\n\n" and the elements are meaningless.
  //
  // Fast, and as accurate as Invert() for matrices with a dominant diagonal. It refuses some matrices that have an
  // inverse: those of which a leading square has none ([0 1; 1 0]), and those whose product of pivots becomes small
  // (diag(1e-50, 1e-50)).
  static unsigned int QuickInvMat(double* block, unsigned int n, double threshold);

  // Replaces a symmetric, positive definite matrix by its inverse, by Cholesky decomposition; only the diagonal and the
  // elements above it are read. 1 on success; 0 for a matrix that is not square or was moved from, which stays
  // unchanged. When a pivot is below 1e-90 it prints
  // "\nProblem encountered C_Matrix::SymInv() - Matrix is singular.\n\n", the result is 0 and the elements are
  // meaningless.
  //
  // As accurate as Invert() with pivoting; the result is symmetric to the last bit.
  unsigned int SymInv();

  // Writes `heading` as it is and then a line per row, each element as printf's " %40.15f" in the C locale would print
  // it, whatever the locale. An existing file is replaced, or continued with `append`. False when a name is null or the
  // file cannot be opened or written.
  bool Dump(const char* fileName, const char* heading, bool append) const;

  // Reads what Dump() wrote: a row per line, its numbers separated by blanks, each as scanf's "%lf" in the C locale
  // would read it. Lines without a number before the first row are a heading and skipped; empty lines are ignored.
  // The current size becomes that of the file. False, with the matrix unchanged, when the file cannot be read, contains
  // anything else, no number at all, rows of different length, more rows or columns than the capacity, a number beyond
  // the range of a double, or a line of more than 4096 + 1024 * MaxCols() bytes (Dump() writes at most 327 bytes per
  // column). The limit bounds the memory that any file can take.
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
