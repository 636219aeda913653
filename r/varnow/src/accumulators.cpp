#include "carry.h"
#include "objects.h"

#include <algorithm>
#include <cmath>
#include <limits>

template <> SEXP object_mark<varnow::simulation>()
{
    return Rf_install("varnow_simulation");
}
template <> SEXP object_mark<varnow::quantiles>()
{
    return Rf_install("varnow_quantiles");
}
template <> SEXP object_mark<varnow::quantiles2>()
{
    return Rf_install("varnow_quantiles2");
}

namespace {

// The sides of an equation between a and b as a search for its root needs them.
bool rises(varnow::quantiles2 const& q, double a, double b)
{
    return q.equation(a) <= 0 && q.equation(b) >= 0;
}

// The range of the usable estimates.
void range_of(varnow::quantiles2 const& q, double& a, double& b)
{
    a = std::numeric_limits<double>::infinity();
    b = -a;
    for (int i = 0; i < q.usable.n; ++i) {
        if (!q.usable.v[i]) continue;
        a = std::fmin(a, q.items[i].T_min());
        b = std::fmax(b, q.items[i].T_max());
    }
}

// What search_range asks of one estimate at least.
bool encloses(varnow::quantiles const& q, double p)
{
    double upto = q.below;
    for (int i = 0; i < q.used; ++i) upto += q.tab.cell[i][1];
    return q.used > 0 && q.below <= p * q.n && upto >= p * q.n && q.T_min() <= q.T_max();
}

} // namespace

// [[Rcpp::export]]
SEXP simulation_new(double lo, double hi, int bins, bool histogram)
{
    return object_pointer(histogram ? std::make_unique<varnow::simulation>(lo, hi, bins)
                                    : std::make_unique<varnow::simulation>());
}

// [[Rcpp::export]]
Rcpp::List simulation_add(SEXP pointer, Rcpp::NumericVector const& x)
{
    varnow::simulation& s = object<varnow::simulation>(pointer);
    return with_warnings([&] {
        for (double const v : x) s.add(v);
        return R_NilValue;
    });
}

// [[Rcpp::export]]
void simulation_reset(SEXP pointer)
{
    object<varnow::simulation>(pointer).reset();
}

// [[Rcpp::export]]
Rcpp::NumericVector simulation_summary(SEXP pointer)
{
    using Rcpp::_;
    varnow::simulation const& s = object<varnow::simulation>(pointer);
    return Rcpp::NumericVector::create(
        _["length"] = s.length(), _["sum"] = s.sum(), _["mean"] = s.mean(), _["gmean"] = s.gmean(),
        _["hmean"] = s.hmean(), _["min"] = (s.min)(), _["max"] = (s.max)(), _["range"] = s.range(),
        _["var"] = s.var(), _["stdev"] = s.stdev(), _["skewness"] = s.skewness(),
        _["kurtosis"] = s.kurtosis());
}

// [[Rcpp::export]]
Rcpp::NumericVector simulation_edges(SEXP pointer)
{
    varnow::simulation const& s = object<varnow::simulation>(pointer);
    return Rcpp::NumericVector::create(s.lo, s.hi, s.bins);
}

// [[Rcpp::export]]
double simulation_mode(SEXP pointer)
{
    varnow::simulation const& s = object<varnow::simulation>(pointer);
    return s.n > 0 ? s.mode() : R_NaN;
}

// [[Rcpp::export]]
Rcpp::NumericMatrix simulation_hist(SEXP pointer)
{
    return matrix_result(object<varnow::simulation>(pointer).hist());
}

// [[Rcpp::export]]
Rcpp::NumericVector simulation_stored(SEXP pointer)
{
    varnow::simulation const& s = object<varnow::simulation>(pointer);
    Rcpp::NumericVector r(std::min(s.n, s.first.rows));
    for (R_xlen_t i = 0; i < r.size(); ++i) r[i] = s.first.cell[i][0];
    return r;
}

// [[Rcpp::export]]
void simulation_merge(SEXP pointer, SEXP other)
{
    object<varnow::simulation>(pointer) += object<varnow::simulation>(other);
}

// What the library warns of, the empty text for a file that was written or read.
// [[Rcpp::export]]
std::string simulation_save(SEXP pointer, std::string const& file)
{
    varnow::simulation const& s = object<varnow::simulation>(pointer);
    listening const ear(std::cerr);
    s.save(varnow::Text(file));
    return ear.heard();
}

// [[Rcpp::export]]
std::string simulation_load(SEXP pointer, std::string const& file)
{
    varnow::simulation& s = object<varnow::simulation>(pointer);
    listening const ear(std::cerr);
    s.load(varnow::Text(file));
    return ear.heard();
}

// [[Rcpp::export]]
SEXP quantiles_new(double p)
{
    return object_pointer(std::make_unique<varnow::quantiles>(p));
}

// [[Rcpp::export]]
Rcpp::List quantiles_add(SEXP pointer, Rcpp::NumericVector const& x)
{
    varnow::quantiles& q = object<varnow::quantiles>(pointer);
    constexpr int bootstrap_at = 10000;
    // The bootstrap draws from the library's generator; set.seed() in R reaches it so.
    if (q.n < bootstrap_at && x.size() >= bootstrap_at - q.n)
        varnow::detail::random_state =
            1 + static_cast<std::uint32_t>(R::unif_rand() * 2147483645.0);
    return with_warnings([&] {
        for (double const v : x) q.add(v);
        return R_NilValue;
    });
}

// [[Rcpp::export]]
void quantiles_reset(SEXP pointer, double p)
{
    object<varnow::quantiles>(pointer).reset(p);
}

// [[Rcpp::export]]
Rcpp::NumericVector quantiles_state(SEXP pointer)
{
    using Rcpp::_;
    varnow::quantiles const& q = object<varnow::quantiles>(pointer);
    return Rcpp::NumericVector::create(_["p"] = q.p, _["length"] = q.n, _["used"] = q.used,
                                       _["below"] = q.below, _["above"] = q.above,
                                       _["frozen"] = q.frozen, _["lo"] = q.lo, _["hi"] = q.hi,
                                       _["min"] = q.T_min(), _["max"] = q.T_max());
}

// [[Rcpp::export]]
Rcpp::List quantiles_result(SEXP pointer)
{
    varnow::quantiles const& q = object<varnow::quantiles>(pointer);
    return with_warnings([&] {
        double const r = q.result();
        return q.n > 0 ? r : R_NaN;
    });
}

// [[Rcpp::export]]
Rcpp::List quantiles_cdf(SEXP pointer, Rcpp::NumericVector const& x)
{
    varnow::quantiles const& q = object<varnow::quantiles>(pointer);
    return with_warnings([&] {
        Rcpp::NumericVector r(x.size());
        for (R_xlen_t i = 0; i < x.size(); ++i) r[i] = q.cdf(x[i]);
        return r;
    });
}

// [[Rcpp::export]]
SEXP quantiles2_new()
{
    return object_pointer(std::make_unique<varnow::quantiles2>(0));
}

// Room is made for each estimate as it comes.
// [[Rcpp::export]]
void quantiles2_add(SEXP pointer, SEXP estimate)
{
    varnow::quantiles2& q = object<varnow::quantiles2>(pointer);
    varnow::quantiles const& added = object<varnow::quantiles>(estimate);
    q.items.push_back(varnow::quantiles(added.p));
    q.capacity = static_cast<int>(q.items.size());
    q += added;
}

// [[Rcpp::export]]
Rcpp::NumericVector quantiles2_state(SEXP pointer)
{
    using Rcpp::_;
    varnow::quantiles2 const& q = object<varnow::quantiles2>(pointer);
    return Rcpp::NumericVector::create(_["p"] = q.p, _["count"] = q.count,
                                       _["used"] = q.simulations_used(),
                                       _["all"] = q.simulations_all());
}

// [[Rcpp::export]]
Rcpp::List quantiles2_cdf(SEXP pointer, Rcpp::NumericVector const& x)
{
    varnow::quantiles2 const& q = object<varnow::quantiles2>(pointer);
    return with_warnings([&] {
        Rcpp::NumericVector r(x.size());
        for (R_xlen_t i = 0; i < x.size(); ++i) r[i] = q.cdf(x[i]);
        return r;
    });
}

// What result() would refuse: which of its steps, or the empty text.
// [[Rcpp::export]]
std::string quantiles2_obstacle(SEXP pointer)
{
    varnow::quantiles2& q = object<varnow::quantiles2>(pointer);
    if (q.count < 1) return "";
    listening const ear(std::cerr);
    double a, b;
    range_of(q, a, b);
    if (!rises(q, a, b)) {
        bool some = false;
        for (int i = 0; i < q.count && !some; ++i) some = encloses(q.items[i], q.p);
        if (!some) return "search_range";
        q.search_range(a, b);
        range_of(q, a, b);
        if (!rises(q, a, b)) q.search_range(a, b);
    }
    a = std::max(-1e300, std::min(a, 1e300));
    b = std::max(-1e300, std::min(b, 1e300));
    return rises(q, a, b) || rises(q, b, a) ? "" : "qfzero";
}

// [[Rcpp::export]]
Rcpp::List quantiles2_result(SEXP pointer)
{
    varnow::quantiles2& q = object<varnow::quantiles2>(pointer);
    return with_warnings([&] { return q.result(); });
}
