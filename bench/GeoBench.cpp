// Geometry, each operation beside the same work by a library that is known to be good: GeographicLib for conversions,
// look angles and the inverse problem, Eigen with dynamic sizes for matrices, Boost for spanning trees.
#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/LocalCartesian.hpp>
#include <algorithm>
#include <array>
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/prim_minimum_spanning_tree.hpp>
#include <random>
#include <vector>

#include "geo/Geodesy.h"
#include "geo/Matrix.h"
#include "geo/Network.h"
#include "geo/PointCoordinate.h"

namespace {

using namespace ALGO;
using Eigen::MatrixXd;

constexpr double kDegree = 0.017453292519943295;

// ---- points --------------------------------------------------------------------------------------------------------

// Two places: geodetic in degrees and metres, and their ECEF positions.
struct S_Pair {
  double lat1, lon1, h1, lat2, lon2, h2;
  double x1, y1, z1, x2, y2, z2;
};

// Stations and satellites all over the Earth.
const std::array<S_Pair, 1024>& Pairs() {
  static const std::array<S_Pair, 1024> pairs = [] {
    std::array<S_Pair, 1024> result;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> lat(-89, 89), lon(-180, 180), ground(0, 5e3), orbit(19e6, 36e6);
    for (S_Pair& p : result) {
      p = {lat(random), lon(random), ground(random), lat(random), lon(random), orbit(random), 0, 0, 0, 0, 0, 0};
      GeographicLib::Geocentric::WGS84().Forward(p.lat1, p.lon1, p.h1, p.x1, p.y1, p.z1);
      GeographicLib::Geocentric::WGS84().Forward(p.lat2, p.lon2, p.h2, p.x2, p.y2, p.z2);
    }
    return result;
  }();
  return pairs;
}

// One operation on one pair per iteration; `work` returns what must not be optimised away.
template <class Work>
void OverPairs(benchmark::State& state, Work work) {
  const auto& pairs = Pairs();
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(work(pairs[i++ % pairs.size()]));
}

void ToCartesian_AF(benchmark::State& state) {
  OverPairs(state, [x = 0.0, y = 0.0, z = 0.0](const S_Pair& p) mutable {
    GeodToCartAF(p.lat1 * kDegree, p.lon1 * kDegree, p.h1, kWgs84A, kWgs84F, x, y, z);
    return x + y + z;
  });
}

void ToCartesian_AB(benchmark::State& state) {
  OverPairs(state, [x = 0.0, y = 0.0, z = 0.0](const S_Pair& p) mutable {
    GeodToCartAB(p.lat1 * kDegree, p.lon1 * kDegree, p.h1, kWgs84A, kWgs84B, x, y, z);
    return x + y + z;
  });
}

void ToCartesian_GeographicLib(benchmark::State& state) {
  OverPairs(state, [x = 0.0, y = 0.0, z = 0.0](const S_Pair& p) mutable {
    GeographicLib::Geocentric::WGS84().Forward(p.lat1, p.lon1, p.h1, x, y, z);
    return x + y + z;
  });
}

void ToGeodetic_Olson(benchmark::State& state) {
  OverPairs(state, [lat = 0.0, lon = 0.0, h = 0.0](const S_Pair& p) mutable {
    CartToGeodOlson(p.x1, p.y1, p.z1, kWgs84A, kWgs84F, lat, lon, h);
    return lat + lon + h;
  });
}

void ToGeodetic_Newton(benchmark::State& state) {
  OverPairs(state, [lat = 0.0, lon = 0.0, h = 0.0](const S_Pair& p) mutable {
    CartToGeodIter(p.x1, p.y1, p.z1, kWgs84A, kWgs84F, lat, lon, h);
    return lat + lon + h;
  });
}

void ToGeodetic_GeographicLib(benchmark::State& state) {
  OverPairs(state, [lat = 0.0, lon = 0.0, h = 0.0](const S_Pair& p) mutable {
    GeographicLib::Geocentric::WGS84().Reverse(p.x1, p.y1, p.z1, lat, lon, h);
    return lat + lon + h;
  });
}

void LookAngles(benchmark::State& state) {
  OverPairs(state, [](const S_Pair& p) {
    const S_LookAngles look = GeodLookAngles(p.lat1 * kDegree, p.lon1 * kDegree, p.h1, p.lat2 * kDegree,
                                             p.lon2 * kDegree, p.h2, kWgs84A, kWgs84F);
    return look.azimuth + look.elevation;
  });
}

void LookAngles_GeographicLib(benchmark::State& state) {
  OverPairs(state, [east = 0.0, north = 0.0, up = 0.0](const S_Pair& p) mutable {
    GeographicLib::LocalCartesian(p.lat1, p.lon1, p.h1).Forward(p.lat2, p.lon2, p.h2, east, north, up);
    return std::atan2(east, north) + std::atan2(up, std::hypot(east, north));
  });
}

void ElevationAndAzimuth(benchmark::State& state) {
  C_PointCoordinate station(C_PointCoordinate::COORD_GEODETIC, 0.8, 0.2, 100.0);
  OverPairs(state, [&station, elevation = 0.0, azimuth = 0.0](const S_Pair& p) mutable {
    station.ElevationAndAzimuth(C_Vector3(p.x2, p.y2, p.z2), true, elevation, azimuth);
    return elevation + azimuth;
  });
}

void Inverse(benchmark::State& state) {
  OverPairs(state, [forward = 0.0, back = 0.0, distance = 0.0](const S_Pair& p) mutable {
    GeodesicInverse(p.lat1 * kDegree, p.lon1 * kDegree, p.lat2 * kDegree, p.lon2 * kDegree, kWgs84A, kWgs84F, forward,
                    back, distance);
    return forward + back + distance;
  });
}

void Inverse_GeographicLib(benchmark::State& state) {
  OverPairs(state, [forward = 0.0, back = 0.0, distance = 0.0](const S_Pair& p) mutable {
    GeographicLib::Geodesic::WGS84().Inverse(p.lat1, p.lon1, p.lat2, p.lon2, distance, forward, back);
    return forward + back + distance;
  });
}

BENCHMARK(ToCartesian_AF);
BENCHMARK(ToCartesian_AB);
BENCHMARK(ToCartesian_GeographicLib);
BENCHMARK(ToGeodetic_Olson);
BENCHMARK(ToGeodetic_Newton);
BENCHMARK(ToGeodetic_GeographicLib);
BENCHMARK(LookAngles);
BENCHMARK(LookAngles_GeographicLib);
BENCHMARK(ElevationAndAzimuth);
BENCHMARK(Inverse);
BENCHMARK(Inverse_GeographicLib);

// ---- matrices ------------------------------------------------------------------------------------------------------

// Symmetric and positive definite, so that every method does.
MatrixXd Definite(Eigen::Index n) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> uniform(-1, 1);
  const MatrixXd root = MatrixXd::NullaryExpr(n, n, [&] { return uniform(random); });
  return root * root.transpose() + n * MatrixXd::Identity(n, n);
}

C_Matrix FromEigen(const MatrixXd& source, bool inversionWork = false) {
  const auto n = static_cast<unsigned int>(source.rows());
  C_Matrix matrix(n, n, n, n, inversionWork);
  for (unsigned int i = 0; i < n; ++i)
    for (unsigned int j = 0; j < n; ++j) matrix(i, j) = source(i, j);
  return matrix;
}

void Product3x3(benchmark::State& state) {
  const C_Matrix a = FromEigen(Definite(3)), b = FromEigen(Definite(3));
  C_Matrix c(3, 3);
  for (auto _ : state) {
    C_Matrix::Multiply(a, b, c, false);
    benchmark::DoNotOptimize(&c(0, 0));
    benchmark::ClobberMemory();
  }
}

void Product3x3_Eigen(benchmark::State& state) {
  const MatrixXd a = Definite(3), b = Definite(3);
  MatrixXd c(3, 3);
  for (auto _ : state) {
    c.noalias() = a * b;
    benchmark::DoNotOptimize(c.data());
    benchmark::ClobberMemory();
  }
}

// The whole way: rotation from latitude and longitude, then R C R'.
void RotateCovariance(benchmark::State& state) {
  const C_Matrix covariance = FromEigen(Definite(3));
  C_PointCoordinate point(C_PointCoordinate::COORD_GEODETIC, 0.8, 0.2, 100.0);
  for (auto _ : state) {
    const C_Matrix local = point.Cart2GeodCovariance(covariance);
    benchmark::DoNotOptimize(&local(0, 0));
  }
}

void RotateCovariance_Eigen(benchmark::State& state) {
  const MatrixXd covariance = Definite(3);
  double lat = 0.8, lon = 0.2;
  for (auto _ : state) {
    benchmark::DoNotOptimize(lat);
    benchmark::DoNotOptimize(lon);
    const double c = std::cos(lat), s = std::sin(lat), cl = std::cos(lon), sl = std::sin(lon);
    MatrixXd rotation(3, 3);
    rotation << -s * cl, -s * sl, c, -sl, cl, 0, c * cl, c * sl, s;
    const MatrixXd local = rotation * covariance * rotation.transpose();
    benchmark::DoNotOptimize(local.data());
  }
}

template <class Invert>
void Inversion(benchmark::State& state, bool inversionWork, Invert invert) {
  const C_Matrix original = FromEigen(Definite(state.range(0)));
  C_Matrix matrix = FromEigen(Definite(state.range(0)), inversionWork), zero(original);
  C_Matrix::Subtract(original, original, zero);
  for (auto _ : state) {
    C_Matrix::Add(original, zero, matrix);
    invert(matrix);
    benchmark::DoNotOptimize(&matrix(0, 0));
    benchmark::ClobberMemory();
  }
}

void Invert_Fast(benchmark::State& state) {
  Inversion(state, false, [](C_Matrix& matrix) { matrix.Invert(); });
}

void Invert_Pivoting(benchmark::State& state) {
  Inversion(state, true, [](C_Matrix& matrix) { matrix.Invert(); });
}

void Invert_Symmetric(benchmark::State& state) {
  Inversion(state, false, [](C_Matrix& matrix) { matrix.SymInv(); });
}

void Invert_Eigen(benchmark::State& state) {
  const MatrixXd original = Definite(state.range(0));
  MatrixXd inverse = original;
  for (auto _ : state) {
    inverse = original.inverse();
    benchmark::DoNotOptimize(inverse.data());
    benchmark::ClobberMemory();
  }
}

void Invert_EigenCholesky(benchmark::State& state) {
  const MatrixXd original = Definite(state.range(0));
  MatrixXd inverse = original;
  for (auto _ : state) {
    inverse = original.llt().solve(MatrixXd::Identity(original.rows(), original.cols()));
    benchmark::DoNotOptimize(inverse.data());
    benchmark::ClobberMemory();
  }
}

void Sizes(benchmark::internal::Benchmark* bench) {
  for (const int n : {3, 4, 6, 8, 16, 32, 64}) bench->Arg(n);
}

BENCHMARK(Product3x3);
BENCHMARK(Product3x3_Eigen);
BENCHMARK(RotateCovariance);
BENCHMARK(RotateCovariance_Eigen);
BENCHMARK(Invert_Fast)->Apply(Sizes);
BENCHMARK(Invert_Pivoting)->Apply(Sizes);
BENCHMARK(Invert_Eigen)->Apply(Sizes);
BENCHMARK(Invert_Symmetric)->Apply(Sizes);
BENCHMARK(Invert_EigenCholesky)->Apply(Sizes);

// ---- spanning trees ------------------------------------------------------------------------------------------------

struct S_Edge {
  unsigned short a, b;
  float weight;
};

// Links from each of `nodes` nodes in a row to the next ten, with random weights.
std::vector<S_Edge> Edges(unsigned int nodes) {
  std::minstd_rand random(1);
  std::vector<S_Edge> edges;
  const unsigned int reach = std::min(10U, nodes - 1);
  for (unsigned int step = 1; step <= reach; ++step)
    for (unsigned int a = 0; a + step < nodes; ++a)
      edges.push_back({static_cast<unsigned short>(a), static_cast<unsigned short>(a + step),
                       static_cast<float>(1 + random() % 100000)});
  return edges;
}

void Tree(benchmark::State& state) {
  const auto nodes = static_cast<unsigned int>(state.range(0));
  C_Network network(nodes, 10 * nodes);
  unsigned short id = 0;
  for (const S_Edge& edge : Edges(nodes)) network.AddLink(id++, edge.a, edge.b, edge.weight);
  for (auto _ : state) benchmark::DoNotOptimize(network.BuildTree());
}

void Tree_Boost(benchmark::State& state) {
  using t_Graph = boost::adjacency_list<boost::vecS, boost::vecS, boost::undirectedS, boost::no_property,
                                        boost::property<boost::edge_weight_t, float>>;
  const auto nodes = static_cast<std::size_t>(state.range(0));
  t_Graph graph(nodes);
  for (const S_Edge& edge : Edges(static_cast<unsigned int>(nodes)))
    boost::add_edge(edge.a, edge.b, edge.weight, graph);
  std::vector<t_Graph::vertex_descriptor> parents(nodes);
  for (auto _ : state) {
    boost::prim_minimum_spanning_tree(graph, parents.data());
    benchmark::DoNotOptimize(parents.data());
    benchmark::ClobberMemory();
  }
}

BENCHMARK(Tree)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(Tree_Boost)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
