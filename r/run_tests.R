# Runs the package's tests against the installed package and ends with a line of counts.
library(testthat)
results <- as.data.frame(test_dir("r/varnow/tests/testthat", reporter = "check",
                                  package = "varnow", load_package = "installed",
                                  stop_on_failure = FALSE))
failed <- sum(results$failed) + sum(results$error)
cat(sprintf("%d passed, %d failed, %d skipped\n", sum(results$passed), failed,
            sum(results$skipped)))
