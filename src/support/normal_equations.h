// Least squares with up to three parameters.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace weld {

using TTriple = std::array<double, 3>;

class TNormalEquations {
public:
  explicit TNormalEquations(std::size_t parameters) : count(parameters) {}

  // slope: change of the modelled value with each parameter; offset: measured minus modelled value.
  void add(const TTriple& slope, double offset, double w) {
    for (std::size_t k = 0; k < count; ++k) {
      for (std::size_t m = 0; m <= k; ++m) a[k][m] += w * slope[k] * slope[m];
      b[k] += w * slope[k] * offset;
    }
    sum += w;
  }
  // The same of many values, by their sums: slope times slope, its lower half; slope times offset; weight.
  void addSums(const std::array<TTriple, 3>& squares, const TTriple& products, double w) {
    for (std::size_t k = 0; k < count; ++k) {
      for (std::size_t m = 0; m <= k; ++m) a[k][m] += squares[k][m];
      b[k] += products[k];
    }
    sum += w;
  }
  double weight() const { return sum; }

  // Cholesky's factor; false where a parameter is not held by the data. To be called once, before the solutions.
  bool factor() {
    for (std::size_t k = 0; k < count; ++k) {
      const double diagonal = a[k][k];
      for (std::size_t m = 0; m <= k; ++m) {
        for (std::size_t j = 0; j < m; ++j) a[k][m] -= a[k][j] * a[m][j];
        if (m < k) a[k][m] /= a[m][m];
      }
      if (!(a[k][k] > 1e-9 * diagonal)) return false;
      a[k][k] = std::sqrt(a[k][k]);
    }
    return true;
  }
  TTriple solution() const { return solve(b); }
  // Column of the inverse: covariances with parameter k, for data of unit variance.
  TTriple covariances(std::size_t k) const {
    TTriple unit{};
    unit[k] = 1.0;
    return solve(unit);
  }

private:
  TTriple solve(TTriple v) const {
    for (std::size_t k = 0; k < count; ++k) {
      for (std::size_t j = 0; j < k; ++j) v[k] -= a[k][j] * v[j];
      v[k] /= a[k][k];
    }
    for (std::size_t k = count; k-- > 0;) {
      for (std::size_t j = k + 1; j < count; ++j) v[k] -= a[j][k] * v[j];
      v[k] /= a[k][k];
    }
    return v;
  }

  std::size_t count;
  std::array<TTriple, 3> a{};  // lower half
  TTriple b{};
  double sum = 0.0;
};

}  // namespace weld
