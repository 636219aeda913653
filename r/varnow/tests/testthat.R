library(testthat)
library(varnow)

test_check("varnow")
