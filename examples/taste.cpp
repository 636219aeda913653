// The read-me's taste: reads a file, fits a score on four columns and rates it.
#include <varnow/varnow.h>

#include <iostream>

using namespace varnow;

int main()
{
    table credit;
    credit.readtxt("examples/data/credit.txt", 0, 0, 1, 0, ';', 1);
    matrix bad = credit["Status"] == "bad";
    matrix X = credit.select(c("Seniority", "Time", "Age", "Expenses"));
    matrix par = logistic_par(X, bad, 2, 1e-6);
    matrix score = lm_score(logistic_val(X, par)); // 0 is the worst, 1000 the best
    std::cout << "AR " << AR(score, bad, 1, 1, 1, 0) << ", KS " << KS(score, bad) << '\n';
}
