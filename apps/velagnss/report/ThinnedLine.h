// A line of any number of points in bounded memory.
#ifndef VELAGNSS_APPS_THINNED_LINE_H
#define VELAGNSS_APPS_THINNED_LINE_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Host {

// A point in the plane in which the line is drawn.
struct S_LinePoint {
  double seconds;  // on the scale of velagnss::StreamClock; NaN when it is not known
  double x;
  double y;
  std::int8_t kind;  // of the line from here on
  bool startsPiece;  // not connected to the point before
};

// Once there are more than `kMost` points, half of them are left out: those that change the line least, measured by the
// triangle of a point and its neighbors (Visvalingam and Whyatt, The Cartographic Journal 30, 1993). Of two neighbors
// only one goes at a time, or a smooth curve, whose triangles are all small, would become a straight line. The ends and
// the points farthest out always stay; where a piece begins or ends, or the kind changes, is left out last.
template <class Point, std::size_t kMost>
class C_ThinnedLine {
 public:
  static_assert(kMost >= 32);  // of which six stay

  void Add(const Point& point) {
    m_points.push_back(point);
    if (m_points.size() <= kMost) return;
    while (m_points.size() > kMost / 2) Thin();
  }

  const std::vector<Point>& Points() const { return m_points; }

 private:
  static constexpr double kNever = std::numeric_limits<double>::infinity();

  void Thin();
  std::vector<double> Weights() const;
  double WeightOf(std::size_t place) const;

  std::vector<Point> m_points;
};

template <class Point, std::size_t kMost>
void C_ThinnedLine<Point, kMost>::Thin() {
  const std::vector<double> weights = Weights();
  std::vector<double> sorted = weights;
  const std::size_t surplus = std::min(sorted.size() / 2, sorted.size() - kMost / 2);
  const auto limit = sorted.begin() + static_cast<std::ptrdiff_t>(surplus - 1);
  std::nth_element(sorted.begin(), limit, sorted.end());
  std::size_t kept = 0;
  bool isLastOut = false;
  for (std::size_t i = 0; i < m_points.size(); ++i) {
    isLastOut = !isLastOut && weights[i] <= *limit && weights[i] < kNever;
    if (!isLastOut) m_points[kept++] = m_points[i];
  }
  m_points.resize(kept);
}

template <class Point, std::size_t kMost>
std::vector<double> C_ThinnedLine<Point, kMost>::Weights() const {
  std::vector<double> weights(m_points.size(), kNever);
  for (std::size_t i = 1; i + 1 < weights.size(); ++i) weights[i] = WeightOf(i);
  for (const auto coordinate : {&S_LinePoint::x, &S_LinePoint::y}) {
    const auto isLess = [coordinate](const Point& a, const Point& b) { return a.*coordinate < b.*coordinate; };
    const auto [least, greatest] = std::minmax_element(m_points.begin(), m_points.end(), isLess);
    for (const auto extreme : {least, greatest}) weights[static_cast<std::size_t>(extreme - m_points.begin())] = kNever;
  }
  return weights;
}

template <class Point, std::size_t kMost>
double C_ThinnedLine<Point, kMost>::WeightOf(std::size_t place) const {
  const Point& before = m_points[place - 1];
  const Point& point = m_points[place];
  const Point& after = m_points[place + 1];
  if (point.startsPiece || after.startsPiece || point.kind != before.kind) return std::numeric_limits<double>::max();
  return std::abs((point.x - before.x) * (after.y - before.y) - (after.x - before.x) * (point.y - before.y));
}

}  // namespace Host

#endif  // VELAGNSS_APPS_THINNED_LINE_H
