// A neural network beside logistic regression on six columns of the credit data: fits both on four
// rows of five, rates both on the others, and saves the network and takes it up again.
//   credit_network FOLDER
#include <varnow/varnow.h>

#include <iostream>

using namespace varnow;

namespace {

matrix scores(neural_net net, matrix const& X)
{
    net.set_patterns(X, zeros(X.rows, 1), 2);
    return net.values(2);
}

void print(char const* name, matrix const& learning, matrix const& learning_bad,
           matrix const& validation, matrix const& validation_bad)
{
    std::cout << name << ": AR " << AR(-learning, learning_bad, 1, 1, 1, 0) << " learning, "
              << AR(-validation, validation_bad, 1, 1, 1, 0) << " validation\n";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "credit_network FOLDER\n";
        return 2;
    }
    table credit;
    credit.readtxt("examples/data/credit.txt", 0, 0, 1, 0, ';', 1);
    matrix const bad = credit["Status"] == "bad";
    matrix X = credit.select(c("Seniority", "Time", "Age", "Expenses", "Amount", "Price"));
    matrix const one = ones(X.rows, 1);
    X = (X - mul(one, mean(X))) / mul(one, stdev(X));
    Vector const learning = rand(X.rows, 1) < 0.8;
    matrix const X1 = X.filter(learning), X2 = X.filter(!learning);
    matrix const bad1 = bad.filter(learning), bad2 = bad.filter(!learning);

    matrix const par = logistic_par(X1, bad1, 2, 1e-6);
    print("regression", logistic_val(X1, par), bad1, logistic_val(X2, par), bad2);

    neural_net net(X.cols, 4, 2, 1); // 4 hidden units, tanh; a logistic output
    net.init(0.1);
    net.set_patterns(X1, bad1, 0);
    net.learn(50, 300, 20, 1e-5, 1, 0, 1, 0); // conjugate steps, no penalty
    Text const files = Text(argv[1]) + "/credit";
    net.save(files);
    neural_net loaded;
    loaded.load(files);
    print("network", scores(loaded, X1), bad1, scores(loaded, X2), bad2);
    double const apart = max(abs(scores(loaded, X2) - scores(net, X2)));
    std::cout << "saved as " << files << "_*.nn; loaded again, its values are within " << apart
              << '\n';
}
