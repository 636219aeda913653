#include "carry.h"

#include <iostream>
#include <streambuf>

namespace {

// What the library prints, on R's console or nowhere. It flushes after every step of a training:
// there a user may interrupt, by an exception that the stream must let through.
class console : public std::streambuf
{
public:
    explicit console(bool shown)
        : shown_(shown), before_(std::cout.rdbuf(this)), mask_(std::cout.exceptions())
    {
        std::cout.exceptions(std::ios::badbit);
    }
    ~console() override
    {
        std::cout.exceptions(std::ios::goodbit);
        std::cout.rdbuf(before_);
        std::cout.exceptions(mask_);
    }
    console(console const&) = delete;
    console& operator=(console const&) = delete;

protected:
    int overflow(int c) override
    {
        if (shown_ && c != EOF) Rcpp::Rcout.put(static_cast<char>(c));
        return 0;
    }
    std::streamsize xsputn(char const* s, std::streamsize n) override
    {
        if (shown_) Rcpp::Rcout.write(s, n);
        return n;
    }
    int sync() override
    {
        if (shown_) Rcpp::Rcout.flush();
        Rcpp::checkUserInterrupt();
        return 0;
    }

private:
    bool shown_;
    std::streambuf* before_;
    std::ios::iostate mask_;
};

varnow::sparse weights(Rcpp::List const& from, char const* name)
{
    return varnow::cmatrix(Rcpp::as<Rcpp::NumericMatrix>(from[name]));
}

// A net of the weights and activation codes of a model in R.
varnow::neural_net net_of(Rcpp::List const& model, Rcpp::IntegerVector const& codes)
{
    Rcpp::NumericMatrix const w1 = model["w1"];
    varnow::neural_net net(w1.nrow(), w1.ncol(), codes[0], codes[1]);
    net.w1 = weights(model, "w1");
    net.b1 = weights(model, "b1");
    net.w2 = weights(model, "w2");
    net.b2 = weights(model, "b2");
    net.init_vars();
    return net;
}

Rcpp::NumericMatrix dense(varnow::sparse const& x)
{
    Rcpp::NumericMatrix r(x.rows, x.cols);
    for (int k = 0; k < x.nnz; ++k) r(x.rowidx[k] - 1, x.colidx[k] - 1) = x.values[k];
    return r;
}

Rcpp::NumericVector measures(varnow::neural_net const& net, int set)
{
    using Rcpp::_;
    double const n = net.n_patterns[set];
    // The library's corr divides the covariance by n and the variances by n - 1.
    return Rcpp::NumericVector::create(_["error"] = net.error(set),
                                       _["corr"] = net.corr(set) * n / (n - 1),
                                       _["AR"] = net.AR(set));
}

} // namespace

// [[Rcpp::export]]
Rcpp::List network_train(Rcpp::List const& start, Rcpp::IntegerVector const& codes,
                         Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y,
                         Rcpp::NumericMatrix const& valid_x, Rcpp::NumericMatrix const& valid_y,
                         Rcpp::IntegerVector const& steps, double min_gain, bool conjugate,
                         bool damped, bool penalty, bool verbose)
{
    using Rcpp::_;
    varnow::neural_net net = net_of(start, codes);
    net.set_patterns(varnow::cmatrix(x), varnow::cmatrix(y), 0);
    bool const validated = valid_x.nrow() > 0;
    if (validated) net.set_patterns(varnow::cmatrix(valid_x), varnow::cmatrix(valid_y), 1);
    {
        console const out(verbose);
        if (validated)
            net.learn_and_valid(steps[0], steps[1], steps[2], min_gain, conjugate, damped, 1);
        else
            net.learn(steps[0], steps[1], steps[2], min_gain, conjugate, damped, 1, penalty);
    }
    Rcpp::RObject valid;
    if (validated) valid = measures(net, 1);
    return Rcpp::List::create(_["w1"] = dense(net.w1), _["b1"] = dense(net.b1),
                              _["w2"] = dense(net.w2), _["b2"] = dense(net.b2),
                              _["learning"] = measures(net, 0), _["validation"] = valid);
}

// [[Rcpp::export]]
Rcpp::NumericVector network_values(Rcpp::List const& model, Rcpp::IntegerVector const& codes,
                                   Rcpp::NumericMatrix const& x)
{
    varnow::neural_net net = net_of(model, codes);
    net.set_patterns(varnow::cmatrix(x), varnow::zeros(x.nrow(), 1), 0);
    varnow::matrix const values = net.values(0);
    Rcpp::NumericVector r(values.rows);
    for (int i = 0; i < values.rows; ++i) r[i] = values.cell[i][0];
    return r;
}

// [[Rcpp::export]]
void network_save(Rcpp::List const& model, Rcpp::IntegerVector const& codes,
                  std::string const& name)
{
    net_of(model, codes).save(varnow::Text(name));
}
