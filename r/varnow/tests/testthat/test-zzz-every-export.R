test_that("every exported function was called with odd arguments", {
  skip_if(length(ls(covered)) < 2) # a single file was run
  expect_identical(setdiff(getNamespaceExports("varnow"), ls(covered)), character())
})
