// The Levenberg–Marquardt step follows Moré's method: J·P = Q·R by Householder
// QR with column pivoting (so a rank-deficient J still yields a least-squares
// Gauss–Newton step), and λ found by a safeguarded Newton iteration on
// φ(λ) = ‖D·p(λ)‖ − Δ, each trial λ solved by reducing [R; √λ·D·P] to
// triangular form with Givens rotations, which leaves R untouched.
#include "numerics/TrustRegionStep.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "numerics/LapackDecl.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("TrustRegionStep", "$Revision: #1 $")

namespace qvsysbase::detail {
namespace {

// A step is taken when the sum of squares falls by at least this fraction of
// what the model predicted; anything positive would do, a small value keeps
// every real decrease.
constexpr double kAcceptRatio = 1e-4;
// Below this ratio the model was poor and the region shrinks ...
constexpr double kShrinkRatio = 0.25;
// ... above this one it was good and the region may grow.
constexpr double kGrowRatio = 0.75;
// The shrink factor's range; 1/10 also answers a tenfold growth of ‖F‖.
constexpr double kMinShrink = 0.1;
constexpr double kHalf = 0.5;
// Moré's subproblem precision: ‖D·p‖ within 10 % of Δ is close enough to the
// boundary; a tighter caller precision is honoured, a looser one is not.
constexpr double kLoosestSubproblemPrecision = 0.1;
// The smallest positive normal double, the floor of λ's bounds.
constexpr double kDwarf = DBL_MIN;

constexpr char kLeft[] = "L";
constexpr char kTransposed[] = "T";

double Norm2(const std::vector<double>& v, int n) { return detail::Norm2(v.data(), n, 1); }

}  // namespace

double Norm2(const double* v, int n, int stride) {
  double scale = 0.0;
  for (int i = 0; i < n; ++i) {
    const double e = std::fabs(v[i * stride]);
    if (!std::isfinite(e)) return e;  // infinity, or not-a-number
    scale = std::max(scale, e);
  }
  if (scale == 0.0) return 0.0;
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    const double t = v[i * stride] / scale;
    sum += t * t;
  }
  return scale * std::sqrt(sum);
}

double ActualReduction(const TrialOutcome& o) {
  // Written so that a not-a-number trial norm falls to −1 as well.
  if (!(0.1 * o.trialResidualNorm < o.residualNorm)) return -1.0;
  const double q = o.trialResidualNorm / o.residualNorm;
  return 1.0 - q * q;
}

double ReductionRatio(const TrialOutcome& o) {
  // A model that promises nothing, or an overflowing promise, earns no trust.
  const bool promising = o.predicted > 0.0 && std::isfinite(o.predicted);
  return promising ? ActualReduction(o) / o.predicted : 0.0;
}

bool IsStepSuccessful(const TrialOutcome& o) { return ReductionRatio(o) >= kAcceptRatio; }

void TrustRegionRadius::Update(const TrialOutcome& o) {
  const double ratio = ReductionRatio(o);
  if (ratio <= kShrinkRatio) {
    const double actual = ActualReduction(o);
    double mu = actual >= 0.0 ? kHalf : kHalf * o.directional / (o.directional + kHalf * actual);
    const bool grewTenfold = !(0.1 * o.trialResidualNorm < o.residualNorm);
    if (grewTenfold || !(mu >= kMinShrink)) mu = kMinShrink;
    radius_ = mu * std::min(radius_, o.stepNorm / kMinShrink);
    parameter_ /= mu;
  } else if (parameter_ == 0.0 || ratio >= kGrowRatio) {
    radius_ = o.stepNorm / kHalf;
    parameter_ *= kHalf;
  }
}

void TrustRegionRadius::ClipTo(double stepNorm) { radius_ = std::min(radius_, stepNorm); }

LevenbergMarquardtStep::LevenbergMarquardtStep(int m, int n, double subproblemPrecision,
                                               int maxSubproblemIterations)
    : m_(m),
      n_(n),
      sigma_(std::min(subproblemPrecision, kLoosestSubproblemPrecision)),
      maxSubproblemIterations_(maxSubproblemIterations),
      jac_(static_cast<std::size_t>(m) * n),
      f_(m),
      diag_(n, 0.0),
      colNorm_(n),
      cols_(n),
      qr_(static_cast<std::size_t>(m) * n),
      tau_(n),
      qtf_(m),
      perm_(n),
      s_(static_cast<std::size_t>(n) * n),
      sdiag_(n),
      dfree_(n) {}

void LevenbergMarquardtStep::Linearise(const double* jac, const double* f,
                                       const std::vector<char>& free) {
  const bool first = !scaled_;
  scaled_ = true;
  std::copy(jac, jac + jac_.size(), jac_.begin());
  std::copy(f, f + m_, f_.begin());
  k_ = 0;
  for (int j = 0; j < n_; ++j) {
    const double* column = jac + static_cast<std::size_t>(j) * m_;
    colNorm_[j] = Norm2(column, m_);
    const double scale = colNorm_[j] != 0.0 ? colNorm_[j] : 1.0;
    diag_[j] = first ? scale : std::max(diag_[j], colNorm_[j]);
    if (!free[j]) continue;
    std::copy(column, column + m_, qr_.begin() + static_cast<std::ptrdiff_t>(k_) * m_);
    dfree_[k_] = diag_[j];
    cols_[k_++] = j;
  }
  if (k_ == 0) return;

  // J_free·P = Q·R, then Qᵀ·F, each after a query of its workspace size.
  // Both report nothing but illegal arguments, which these calls never pass.
  std::vector<int> jpvt(k_, 0);  // 0: every column may be pivoted
  const auto factorise = [&](double* work, int lwork) {
    int info = 0;
    dgeqp3_(&m_, &k_, qr_.data(), &m_, jpvt.data(), tau_.data(), work, &lwork, &info);
    QV_ASSERT(info == 0);
  };
  const auto applyQt = [&](double* work, int lwork) {
    const int one = 1;
    int info = 0;
    dormqr_(kLeft,
            kTransposed,
            &m_,
            &one,
            &k_,
            qr_.data(),
            &m_,
            tau_.data(),
            qtf_.data(),
            &m_,
            work,
            &lwork,
            &info,
            kFlagLen,
            kFlagLen);
    QV_ASSERT(info == 0);
  };
  double factoriseSize = 0.0, applySize = 0.0;
  factorise(&factoriseSize, -1);
  applyQt(&applySize, -1);
  work_.resize(static_cast<std::size_t>(std::max(factoriseSize, applySize)) + 1);
  factorise(work_.data(), static_cast<int>(work_.size()));
  std::copy(f, f + m_, qtf_.begin());
  applyQt(work_.data(), static_cast<int>(work_.size()));
  for (int j = 0; j < k_; ++j) perm_[j] = jpvt[j] - 1;
}

double LevenbergMarquardtStep::ScaledNorm(const double* v) const {
  std::vector<double> scaled(n_);
  for (int j = 0; j < n_; ++j) scaled[j] = diag_[j] * v[j];
  return Norm2(scaled, n_);
}

double LevenbergMarquardtStep::MinColumnNorm() const {
  return *std::min_element(colNorm_.begin(), colNorm_.end());
}

double LevenbergMarquardtStep::ScaledFreeNorm(const std::vector<double>& x) const {
  std::vector<double> scaled(k_);
  for (int j = 0; j < k_; ++j) scaled[j] = dfree_[j] * x[j];
  return Norm2(scaled, k_);
}

// x = P·R⁻¹·(Qᵀ·F) on the leading non-singular part of R, zero beyond it: the
// Gauss–Newton direction (the step is −x).
void LevenbergMarquardtStep::SolveGaussNewton(std::vector<double>& x) {
  const auto r = [&](int i, int j) { return qr_[i + static_cast<std::size_t>(j) * m_]; };
  std::vector<double> w(qtf_.begin(), qtf_.begin() + k_);
  int nsing = k_;
  for (int j = 0; j < k_; ++j) {
    if (r(j, j) == 0.0 && nsing == k_) nsing = j;
    if (nsing < k_) w[j] = 0.0;
  }
  for (int j = nsing - 1; j >= 0; --j) {
    w[j] /= r(j, j);
    for (int i = 0; i < j; ++i) w[i] -= r(i, j) * w[j];
  }
  for (int j = 0; j < k_; ++j) x[perm_[j]] = w[j];
}

// x minimising ‖[R; √λ·D·P]·Pᵀx − [Qᵀ·F; 0]‖. Givens rotations eliminate the
// rows of √λ·D one at a time into S, the lower-triangular transpose of the
// combined factor (S's diagonal ends in sdiag_), so R stays as it is for the
// next λ.
void LevenbergMarquardtStep::SolveDamped(double parameter, std::vector<double>& x) {
  const auto r = [&](int i, int j) { return qr_[i + static_cast<std::size_t>(j) * m_]; };
  const auto s = [&](int i, int j) -> double& { return s_[i + static_cast<std::size_t>(j) * k_]; };
  std::vector<double> w(qtf_.begin(), qtf_.begin() + k_);
  for (int j = 0; j < k_; ++j)
    for (int i = j; i < k_; ++i) s(i, j) = r(j, i);
  const double root = std::sqrt(parameter);
  for (int j = 0; j < k_; ++j) {
    const double d = root * dfree_[perm_[j]];
    if (d != 0.0) {
      std::fill(sdiag_.begin() + j, sdiag_.begin() + k_, 0.0);
      sdiag_[j] = d;
      double qtbpj = 0.0;
      for (int c = j; c < k_; ++c) {
        if (sdiag_[c] == 0.0) continue;
        // The rotation that zeroes sdiag_[c] against s(c, c), formed from the
        // smaller of the two ratios so that neither overflows.
        double sine, cosine;
        if (std::fabs(s(c, c)) < std::fabs(sdiag_[c])) {
          const double cotan = s(c, c) / sdiag_[c];
          sine = 0.5 / std::sqrt(0.25 + 0.25 * cotan * cotan);
          cosine = sine * cotan;
        } else {
          const double tan = sdiag_[c] / s(c, c);
          cosine = 0.5 / std::sqrt(0.25 + 0.25 * tan * tan);
          sine = cosine * tan;
        }
        s(c, c) = cosine * s(c, c) + sine * sdiag_[c];
        const double t = cosine * w[c] + sine * qtbpj;
        qtbpj = -sine * w[c] + cosine * qtbpj;
        w[c] = t;
        for (int i = c + 1; i < k_; ++i) {
          const double u = cosine * s(i, c) + sine * sdiag_[i];
          sdiag_[i] = -sine * s(i, c) + cosine * sdiag_[i];
          s(i, c) = u;
        }
      }
    }
    sdiag_[j] = s(j, j);
  }
  int nsing = k_;
  for (int j = 0; j < k_; ++j) {
    if (sdiag_[j] == 0.0 && nsing == k_) nsing = j;
    if (nsing < k_) w[j] = 0.0;
  }
  for (int j = nsing - 1; j >= 0; --j) {
    double sum = 0.0;
    for (int i = j + 1; i < nsing; ++i) sum += s(i, j) * w[i];
    w[j] = (w[j] - sum) / sdiag_[j];
  }
  for (int j = 0; j < k_; ++j) x[perm_[j]] = w[j];
}

// Newton's correction of λ for φ(λ) = ‖D·x‖ − Δ, using the factor S of the
// last SolveDamped: φ'(λ)/‖D·x‖ = −‖S⁻¹·Pᵀ·Dᵀ·D·x/‖D·x‖‖², so
// Δλ = (φ/Δ)/‖S⁻¹·q‖² with q = Pᵀ·Dᵀ·D·x/‖D·x‖.
double LevenbergMarquardtStep::NewtonCorrection(const std::vector<double>& x, double dxnorm,
                                                double fp, double radius) const {
  std::vector<double> w(k_);
  for (int j = 0; j < k_; ++j) {
    const int l = perm_[j];
    w[j] = dfree_[l] * (dfree_[l] * x[l] / dxnorm);
  }
  for (int j = 0; j < k_; ++j) {
    w[j] /= sdiag_[j];
    for (int i = j + 1; i < k_; ++i) w[i] -= s_[i + static_cast<std::size_t>(j) * k_] * w[j];
  }
  const double t = Norm2(w, k_);
  return ((fp / radius) / t) / t;
}

void LevenbergMarquardtStep::ComputeStep(double radius, double& parameter, double* p) {
  std::fill(p, p + n_, 0.0);
  if (k_ == 0) {
    parameter = 0.0;
    return;
  }
  const auto r = [&](int i, int j) { return qr_[i + static_cast<std::size_t>(j) * m_]; };
  std::vector<double> x(k_);
  SolveGaussNewton(x);
  double dxnorm = ScaledFreeNorm(x);
  double fp = dxnorm - radius;
  if (fp <= sigma_ * radius) {
    parameter = 0.0;  // the Gauss–Newton step lies inside the region
  } else {
    // Lower bound of λ from φ's Newton step at 0, when R has full rank.
    double lower = 0.0;
    bool fullRank = true;
    for (int j = 0; j < k_; ++j) fullRank = fullRank && r(j, j) != 0.0;
    std::vector<double> w(k_);
    if (fullRank) {
      for (int j = 0; j < k_; ++j) {
        const int l = perm_[j];
        w[j] = dfree_[l] * (dfree_[l] * x[l] / dxnorm);
      }
      for (int j = 0; j < k_; ++j) {
        double sum = 0.0;
        for (int i = 0; i < j; ++i) sum += r(i, j) * w[i];
        w[j] = (w[j] - sum) / r(j, j);
      }
      const double t = Norm2(w, k_);
      lower = ((fp / radius) / t) / t;
    }
    // Upper bound ‖D⁻¹·JᵀF‖/Δ: beyond it the step is already inside the region.
    for (int j = 0; j < k_; ++j) {
      double sum = 0.0;
      for (int i = 0; i <= j; ++i) sum += r(i, j) * qtf_[i];
      w[j] = sum / dfree_[perm_[j]];
    }
    const double gnorm = Norm2(w, k_);
    double upper = gnorm / radius;
    if (upper == 0.0) upper = kDwarf / std::min(radius, 0.1);

    parameter = std::min(std::max(parameter, lower), upper);
    if (parameter == 0.0) parameter = gnorm / dxnorm;
    for (int iter = 1;; ++iter) {
      if (parameter == 0.0) parameter = std::max(kDwarf, 0.001 * upper);
      SolveDamped(parameter, x);
      dxnorm = ScaledFreeNorm(x);
      const double previous = fp;
      fp = dxnorm - radius;
      // Close enough to the boundary; or λ's lower bound is 0 and φ keeps
      // falling below 0 (the answer is λ near 0); or out of iterations.
      if (std::fabs(fp) <= sigma_ * radius || (lower == 0.0 && fp <= previous && previous < 0.0) ||
          iter >= maxSubproblemIterations_) {
        break;
      }
      const double correction = NewtonCorrection(x, dxnorm, fp, radius);
      if (fp > 0.0) lower = std::max(lower, parameter);
      if (fp < 0.0) upper = std::min(upper, parameter);
      parameter = std::max(lower, parameter + correction);
    }
  }
  for (int j = 0; j < k_; ++j) p[cols_[j]] = -x[j];
}

void LevenbergMarquardtStep::Predict(const double* p, bool exactStep, double parameter,
                                     double& predicted, double& directional) const {
  const double fnorm = Norm2(f_, m_);
  predicted = directional = 0.0;
  if (fnorm == 0.0) return;
  std::vector<double> jp(m_, 0.0);
  for (int j = 0; j < n_; ++j) {
    if (p[j] == 0.0) continue;
    const double* column = jac_.data() + static_cast<std::size_t>(j) * m_;
    for (int i = 0; i < m_; ++i) jp[i] += column[i] * p[j];
  }
  const double t1 = Norm2(jp, m_) / fnorm;
  if (exactStep) {
    // From JᵀF = −(JᵀJ + λDᵀD)·p: −2FᵀJp − ‖Jp‖² = ‖Jp‖² + 2λ‖Dp‖², all terms positive.
    const double t2 = std::sqrt(parameter) * ScaledNorm(p) / fnorm;
    predicted = t1 * t1 + 2.0 * t2 * t2;
    directional = -(t1 * t1 + t2 * t2);
    return;
  }
  double fjp = 0.0;
  for (int i = 0; i < m_; ++i) fjp += (f_[i] / fnorm) * (jp[i] / fnorm);
  predicted = -2.0 * fjp - t1 * t1;
  directional = fjp;
}

}  // namespace qvsysbase::detail
