# Times of the R package beside R's own, each the best of some runs: ./dev bench r
library(varnow)
best <- function(f, runs = 9) min(vapply(seq_len(runs), function(k) system.time(f())[[3]], 0))
beside <- function(title, ours, theirs, name) {
  mine <- best(ours)
  other <- best(theirs)
  cat(sprintf("%-34s %8.1f ms  %-14s %8.1f ms  ratio %.2f\n", title, 1e3 * mine, name, 1e3 * other,
              mine / other))
}

Rcpp::sourceCpp(code = "
  // [[Rcpp::plugins(cpp17)]]
  #include <varnow/rbridge/conversions.h>
  // [[Rcpp::export]]
  Rcpp::NumericMatrix there_and_back(Rcpp::NumericMatrix const& x, int times)
  {
      Rcpp::NumericMatrix r(0, 0);
      for (int k = 0; k < times; ++k) r = varnow::rmatrix(varnow::cmatrix(x));
      return r;
  }")
set.seed(1)
x <- matrix(runif(1e6), 1000)
copies <- function() for (k in 1:20) {
  y <- x
  y[1] <- 0
}
beside("rmatrix(cmatrix(x)) 1000 x 1000, 20", function() there_and_back(x, 20), copies, "copy")

n <- 1e6
d <- data.frame(g = sample(100, n, TRUE), h = sample(letters[1:10], n, TRUE),
                x = round(rnorm(n), 4), y = runif(n))
file <- tempfile()
beside("write_delimited 1e6 x 4", function() write_delimited(d, file),
       function() write.table(d, file, sep = "\t", row.names = FALSE, quote = FALSE), "write.table")
beside("read_delimited 1e6 x 4", function() read_delimited(file), function() read.delim(file),
       "read.delim")
beside("group_summary 1e6 in 1000 groups", function() group_summary(d, c("g", "h"), y = mean(y)),
       function() aggregate(y ~ g + h, d, mean), "aggregate")
beside("order_values 1e6", function() order_values(d$y), function() order(d$y), "order")
X <- matrix(rnorm(200000 * 20), 200000)
y <- rnorm(200000)
beside("linreg 200000 x 20", function() linreg(X, y), function() lm.fit(cbind(1, X), y), "lm.fit")

flagged <- data.frame(X, y = rbinom(200000, 1, plogis(X %*% rnorm(20) / 4 - 1)))
beside("score_model 200000 x 20", function() score_model(y ~ ., flagged),
       function() glm(y ~ ., binomial, flagged), "glm")
score <- rnorm(1e6)
bad <- rbinom(1e6, 1, plogis(-score))
if (requireNamespace("pROC", quietly = TRUE))
  beside("AR of 1e6 scores", function() AR(score, bad),
         function() pROC::auc(bad, score, levels = 0:1, direction = ">"), "pROC::auc")
