#include "model/dilution.h"

#include <Eigen/Dense>
#include <cmath>

#include "model/geodesy.h"

namespace orb::sim {
namespace {

/// The direction to a satellite along east, north and up, and 1 for the clock.
Eigen::Vector4d lineOfSight(const Satellite& satellite) {
  const double elevation = satellite.elevation * kRadiansPerDegree;
  const double azimuth = satellite.azimuth * kRadiansPerDegree;
  return {std::cos(elevation) * std::sin(azimuth), std::cos(elevation) * std::cos(azimuth),
          std::sin(elevation), 1};
}

Eigen::Matrix4d normalMatrix(const std::vector<Satellite>& satellites) {
  Eigen::Matrix4d sum = Eigen::Matrix4d::Zero();
  for (const Satellite& satellite : satellites) {
    const Eigen::Vector4d row = lineOfSight(satellite);
    sum += row * row.transpose();
  }
  return sum;
}

/// The variances of the unknowns, that of a range being 1.
template <typename Matrix>
auto variances(const Matrix& normal) {
  constexpr double kSmallestPivot = 1e-9;
  Eigen::FullPivLU<Matrix> factors(normal);
  factors.setThreshold(kSmallestPivot);
  using Diagonal = Eigen::Matrix<double, Matrix::RowsAtCompileTime, 1>;
  return factors.isInvertible() ? std::optional<Diagonal>(factors.inverse().diagonal())
                                : std::nullopt;
}

}  // namespace

std::optional<Dilution> dilutionIn3d(const std::vector<Satellite>& satellites) {
  const auto variance = variances(normalMatrix(satellites));
  if (!variance) {
    return std::nullopt;
  }
  const Eigen::Vector4d& v = *variance;
  return Dilution{std::sqrt(v.sum()), std::sqrt(v[0] + v[1] + v[2]), std::sqrt(v[0] + v[1]),
                  std::sqrt(v[2]), std::sqrt(v[3])};
}

std::optional<Dilution> dilutionIn2d(const std::vector<Satellite>& satellites) {
  const std::array<int, 3> unknowns{0, 1, 3};
  const Eigen::Matrix3d normal = normalMatrix(satellites)(unknowns, unknowns);
  const auto variance = variances(normal);
  if (!variance) {
    return std::nullopt;
  }
  const Eigen::Vector3d& v = *variance;
  const double horizontal = std::sqrt(v[0] + v[1]);
  return Dilution{std::sqrt(v.sum()), horizontal, horizontal, 0, std::sqrt(v[2])};
}

Dilution dilutionOfTime(const std::vector<Satellite>& satellites) {
  const double time = 1 / std::sqrt(static_cast<double>(satellites.size()));
  return {time, 0, 0, 0, time};
}

}  // namespace orb::sim
