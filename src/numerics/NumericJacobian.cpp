#include "numerics/NumericJacobian.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "numerics/TrustRegionSolver.h"

namespace qvsysbase::detail {
namespace {

// A residual that is not finite at a displaced point usually means the step
// left the callback's domain; an eighth of the step per retry reaches a point
// 8⁶ ≈ 2.6e5 times closer within six retries.
constexpr int kRetries = 6;
constexpr double kRetryShrink = 0.125;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool AllFinite(const std::vector<double>& v) {
  return std::all_of(v.begin(), v.end(), [](double e) { return std::isfinite(e); });
}

// The evaluation context of one estimate: the displaced point and the residual buffers.
class Differencer {
 public:
  Differencer(TRResidualFn fcn, int n, int m, const double* x, void* userData)
      : fcn_(fcn),
        n_(n),
        m_(m),
        x_(x),
        userData_(userData),
        point_(x, x + n),
        plus_(m),
        minus_(m) {}

  // Column j from F at x_j + hi and x_j − lo (either may be 0, then F(x) is
  // used); false when a residual is not finite.
  bool Column(int j, double hi, double lo, double* column) {
    if (!Evaluate(j, x_[j] + hi, plus_) || !Evaluate(j, x_[j] - lo, minus_)) return false;
    // The distance between the two points as represented, not hi + lo.
    const double width = (x_[j] + hi) - (x_[j] - lo);
    for (int i = 0; i < m_; ++i) column[i] = (plus_[i] - minus_[i]) / width;
    return true;
  }

 private:
  bool Evaluate(int j, double value, std::vector<double>& out) {
    if (value == x_[j]) return Centre(out);
    point_[j] = value;
    int m = m_, n = n_;
    fcn_(&m, &n, point_.data(), out.data(), userData_);
    point_[j] = x_[j];
    return AllFinite(out);
  }

  // F(x), evaluated once and only if a one-sided difference needs it.
  bool Centre(std::vector<double>& out) {
    if (centre_.empty()) {
      centre_.resize(m_);
      int m = m_, n = n_;
      fcn_(&m, &n, x_, centre_.data(), userData_);
    }
    out = centre_;
    return AllFinite(out);
  }

  TRResidualFn fcn_;
  int n_, m_;
  const double* x_;
  void* userData_;
  std::vector<double> point_, plus_, minus_, centre_;
};

// The room from x_j to each bound (infinite without bounds).
void Room(int j, const double* x, const double* lower, const double* upper, double& up,
          double& down) {
  up = upper != nullptr ? upper[j] - x[j] : kInfinity;
  down = lower != nullptr ? x[j] - lower[j] : kInfinity;
}

// The two displacements for step h: central where both fit, one-sided towards
// the inside where one does, the room there is where neither does.
void Displacements(double h, double up, double down, double& hi, double& lo) {
  const bool fitsUp = h <= up, fitsDown = h <= down;
  if (fitsUp && fitsDown) {
    hi = lo = h;
  } else if (fitsUp || fitsDown) {
    hi = fitsUp ? h : 0.0;
    lo = fitsDown ? h : 0.0;
  } else {
    hi = std::max(up, 0.0);
    lo = std::max(down, 0.0);
  }
}

}  // namespace

int EstimateJacobian(TRResidualFn fcn, int n, int m, double* jac, const double* x, double jacEps,
                     void* userData, const double* lower, const double* upper) {
  if (n < 1 || m < 1 || fcn == nullptr || jac == nullptr || x == nullptr) return kTrInvalidOption;
  if ((lower == nullptr) != (upper == nullptr)) return kTrInvalidOption;
  if (!(jacEps > 0.0) || !std::isfinite(jacEps)) return kTrInvalidOption;
  Differencer differencer(fcn, n, m, x, userData);
  for (int j = 0; j < n; ++j) {
    double* column = jac + static_cast<std::size_t>(j) * m;
    double up = 0.0, down = 0.0;
    Room(j, x, lower, upper, up, down);
    if (up <= 0.0 && down <= 0.0) {
      std::fill(column, column + m, 0.0);
      continue;
    }
    double h = jacEps * (x[j] != 0.0 ? std::fabs(x[j]) : 1.0);
    bool estimated = false;
    for (int attempt = 0; attempt <= kRetries && !estimated; ++attempt, h *= kRetryShrink) {
      double hi = 0.0, lo = 0.0;
      Displacements(h, up, down, hi, lo);
      estimated = differencer.Column(j, hi, lo, column);
    }
    if (!estimated) std::fill(column, column + m, std::numeric_limits<double>::quiet_NaN());
  }
  return kTrSuccess;
}

}  // namespace qvsysbase::detail
