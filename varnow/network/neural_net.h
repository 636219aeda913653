// A feed-forward network with one hidden layer and one output, on sparse weights.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/sparse/sparse.h>

namespace varnow {

// Activation codes: 1 "logistic" 1 / (1 + exp(-x)), 2 "tanhyp" tanh(x), 3 "linear" x; 0 is
// "undefined". They have the form that `forall` applies to every stored entry.
/// - refuses: every other code, and 0
VARNOW_API double activation(double x, int code);
/// The slope at the place where the activation is y.
VARNOW_API double d_activation(double y, int code);
/// - refuses: a code outside 0 to 3
VARNOW_API Text act_name(int code);

/// A weighted mean that counts high values most: 2 / n times the sum of x(i) (i - 1) / (n - 1) over
/// the values in ascending order, into which it sorts m. NaN for a single value.
/// - m: one column or one row; refuses others as `sort` does
VARNOW_API double mean3n(matrix& m);

/// A network for regression and scores, with its weights, up to three sets of patterns and the work
/// space of training: one object is a complete experiment.
///
/// For a row x of inputs the hidden units are h = activation of mul(x, w1) + b1, and the value is
/// the activation of mul(h, w2) + b2. A connection that does not exist is an entry that is not
/// stored. Activation works on stored entries, as `forall` does: where a sum of mul or + holds
/// nothing (it is at most 1e-15 in magnitude, or has no terms) the unit has no activation and
/// counts as 0, be its function logistic or not. So it is in values, gradients and trial errors
/// alike; the slope of such a unit is 0, that of such an output is taken at 0. A connection that is
/// not stored has no gradient, and in the gradients of hidden units what is at most 1e-15 is
/// dropped.
///
/// After an `init*`, `load` or a change of the pattern of a weight matrix by hand, `init_vars` must
/// have run (all but the last do it themselves): training adds and compares gradients, directions
/// and trial weights entry by entry in the order of the weights.
///
/// Set 0 is for learning, 1 for validation, 2 for measures only. NaN in patterns or weights passes
/// into errors by the plain arithmetic; a comparison with it holds nowhere.
/// - refuse, class NEURAL_NET: a set outside 0 to 2; weights whose shapes are not those of `n_in`
///   and `n_hid`; patterns of another width than `n_in`; undefined activation; in training
///   gradients or directions with another number of entries than the weights
class VARNOW_API neural_net
{
public:
    int n_patterns[3];
    sparse inputs[3];  ///< one pattern a row
    sparse outputs[3]; ///< targets, one column
    int n_in, n_hid;
    int act_hid, act_out;
    sparse w1, b1, w2, b2;
    sparse gw1, gb1, gw2, gb2;         ///< gradient of the current step
    sparse dw1, db1, dw2, db2;         ///< conjugate direction, kept between steps
    sparse sw1, sb1, sw2, sb2;         ///< trial step of the damped search
    sparse tw1, tb1, tw2, tb2;         ///< trial weights
    sparse cur_in, cur_hid, cur_delta; ///< the pattern at which a gradient pass stands or ended
    matrix grad_vec;                   ///< all P gradient values in a column
    matrix unit_mat;                   ///< P by P
    matrix step_vec;                   ///< trial step as a column
    matrix outer_mat;                  ///< grad_vec times its transpose
    double grad_norm2;                 ///< squared gradient of the previous step, 0 for none
    double lambda;                     ///< damping
    double tau;                        ///< last step of the line search
    int rep_total;                     ///< sum of rep
    matrix rep;                        ///< how often each learning pattern counts

    neural_net();
    /// Without weights: an `init*` follows.
    neural_net(int n_in, int n_hid, int act_hid, int act_out);
    void set_activ_fun(int act_hid, int act_out);
    /// Forgets the conjugate direction and the steps of both searches.
    void reset();

    // Weights. Draws are the sparse generator's, between 0 and 1, times scale: weights are not
    // centred on 0.
    /// Every connection.
    void init(double scale);
    /// Each input with a hidden unit of its own; needs n_hid of at least n_in.
    void init_simply(double scale);
    /// One input with `count` hidden units from `first` on.
    /// - refuses: positions outside the net
    void init_single_input(int input, int count, int first, double scale);
    /// One input with one hidden unit, started from the learning set by `param_start_B` (for a 0/1
    /// input) or `param_start_C`; for act_hid 2 and act_out 3.
    /// - refuse: positions outside the net; unsuitable patterns
    void init_binfun(int input, int hidden);
    void init_confun(int input, int hidden);
    /// Brings the work space in line with the patterns of the weights, all zero, and forgets steps.
    void init_vars();

    /// Both become `sparse`; for set 0 every pattern counts once from now on.
    /// - refuses: unequal rows; several columns of targets; a set outside 0 to 2
    void set_patterns(matrix const& in, matrix const& out, int set);
    /// Print to standard output.
    void datainfo() const;
    void structure() const;
    /// Grows the layers; new units have no connections.
    /// - refuses: a smaller size
    void resizec(int n_in, int n_hid);

    /// The output for one row of inputs.
    double value(sparse const& x) const;
    /// A column without names.
    matrix values(int s) const;
    /// Mean squared error, every pattern counting once; NaN for no patterns.
    double error(int s) const;
    /// `cor` of targets and values.
    double corr(int s) const;
    /// The accuracy ratio of values against targets, over the whole range, ties as they fall.
    double AR(int s) const;

    // Training, by whole passes over set 0. The penalty, where it is asked for, adds
    // 0.33 S / (K + S) to the mean error, S being the sum of |w|^1.5 over w1, w2 and b1 and
    // K = (n_in + 2) n_hid; its gradient takes K + S for a constant.
    /// One step: gradient, then the better of a conjugate step with a line search (use_cg) and a
    /// damped Gauss-Newton step (use_gn). Without either only the gradient is made.
    /// - train_hidden: 0 keeps w1 and b1
    /// - returns: 1 when there is no step to take, 0 otherwise
    int backprop(int use_cg, int use_gn, int train_hidden, int use_penalty);
    /// Steps until the smoothed relative gain of the error has been below min_gain for more than
    /// `patience` steps behind min_iter, at most max_iter (at least one); keeps the best weights.
    /// With negative patience only measures. Prints each step.
    /// - returns: 1
    int learn(int min_iter, int max_iter, int patience, double min_gain, int use_cg, int use_gn,
              int train_hidden, int use_penalty);
    /// The same with the weights of the best root of corr(0) corr(1), without penalty; the step
    /// that reaches max_iter is not compared.
    int learn_and_valid(int min_iter, int max_iter, int patience, double min_gain, int use_cg,
                        int use_gn, int train_hidden);
    /// Rounds of up to 12 steps, until `error_rep` is no higher than the best; a round that fails
    /// goes back to the best weights and reweights the patterns by `random_rep`.
    int fit(int rounds, int use_cg, int use_gn, int train_hidden);

    /// The error of set 0, weighted by rep, at weights less t times the direction.
    double error_tau(double t, int penalty);
    /// The same at weights less the trial step.
    double error_mod(int penalty);
    /// Where error_tau is least between a and b, as `fmin` (univariate.h) finds it.
    double qmin_error_tau(double a, double b, double tol, int penalty);

    /// Weights the learning patterns by n * fraction draws with replacement, from the network's own
    /// generator.
    /// - refuse: a fraction that gives no count
    void random_rep(double fraction);
    void normal_rep();
    /// The squared errors of set 0 resampled: `mean3n` of the means of 1000 samples of n * fraction
    /// draws.
    double error_rep(double fraction) const;

    /// Stored values, in this order, to a column, from its first row on; the fourth only if it has
    /// exactly one. `param2weight` is the reverse.
    /// - refuse: a column that is too short
    void weight2param(sparse& a, sparse& b, sparse& c, sparse& d, matrix& column) const;
    void param2weight(matrix& column, sparse& a, sparse& b, sparse& c, sparse& d) const;

    /// Six text files beside each other: name + "_layers.nn" with the sizes of the layers,
    /// "_activ.nn" with the activation codes, "_w1.nn", "_b1.nn", "_w2.nn" and "_b2.nn" with the
    /// weights as `sparse` writes them, six digits each. `load` leaves patterns as they are and
    /// ends with `init_vars`; the net is as before until all files have been read.
    /// - refuse, naming the file: one that cannot be opened or written, or that does not fit
    void save(Text const& name) const;
    void load(Text const& name);
};

} // namespace varnow
