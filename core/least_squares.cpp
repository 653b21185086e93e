#include "core/least_squares.h"

#include <Eigen/QR>
#include <cmath>

namespace ovix {

namespace {

using Vector = Eigen::VectorXd;

/// Beyond it the powers of the points are one another's multiples in double precision.
constexpr int kHighestDegree = 32;

/// Where the points are centred and how far they reach, so that the fit runs over -1 to 1.
struct SSpread {
    explicit SSpread(const Vector& x)
        : centre(x.minCoeff() + (x.maxCoeff() - x.minCoeff()) / 2), reach((x.array() - centre).abs().maxCoeff()) {}

    double centre;
    double reach;
};

/// The coefficients in x of a polynomial whose coefficients are in (x - centre) / reach.
Vector Unscaled(Vector a, const SSpread& spread) {
    double power = 1;
    for (Eigen::Index k = 0; k < a.size(); ++k, power *= spread.reach) a[k] /= power;
    for (Eigen::Index first = 0; first + 1 < a.size(); ++first) {
        for (Eigen::Index k = a.size() - 2; k >= first; --k) a[k] -= spread.centre * a[k + 1];
    }
    return a;
}

}  // namespace

bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients) {
    if (degree < 0 || degree > kHighestDegree || x.size() != y.size() || x.size() <= static_cast<u32>(degree)) {
        return false;
    }
    const Vector points = Eigen::Map<const Vector>(x.data(), x.size());
    const Eigen::Map<const Vector> values(y.data(), y.size());
    if (!points.allFinite() || !values.allFinite()) return false;

    const SSpread spread(points);
    if (!std::isfinite(spread.reach) || (spread.reach == 0 && degree > 0)) return false;
    Eigen::MatrixXd powers(points.size(), degree + 1);
    powers.col(0).setOnes();
    for (int k = 1; k <= degree; ++k) {
        powers.col(k) = powers.col(k - 1).array() * (points.array() - spread.centre) / spread.reach;
    }
    const Eigen::ColPivHouseholderQR<Eigen::MatrixXd> factors(powers);
    if (factors.rank() <= degree) return false;
    const Vector fitted = Unscaled(factors.solve(values), spread);
    if (!fitted.allFinite() || !coefficients.SetSize(static_cast<u32>(fitted.size()))) return false;
    Vector::Map(coefficients.data(), fitted.size()) = fitted;
    return true;
}

}  // namespace ovix
