#' Summaries of long streams
#'
#' Objects that take values as they come, keep a fixed amount of memory, and answer at any time.
#' They are references: `$add()` changes the object itself, and a copy by `<-` is the same object.
#'
#' `simulation()` keeps sums of powers, the extremes, a histogram with fixed edges and the first
#' 20,000 values. `quantiles()` estimates one quantile: up to 100,000 values exactly, of more by
#' those near it. `quantiles2()` joins such estimates that were filled apart: its result is where the
#' mean of their distribution functions is p.
#'
#' @section Methods of all:
#' `$add(x, na.rm = FALSE)` takes all values of a vector, matrix or data frame (an object of
#' `quantiles2()` takes an estimate). A missing value counts as a value, unless `na.rm`: after it
#' what comes from the sums is `NaN`, extremes are those of the other values. `$add()`, `$reset()`,
#' `$merge()` and `$load()` give the object back, invisibly.
#'
#' @section Methods of `simulation()`:
#' `$length()`, `$sum()`, `$mean()`, `$gmean()`, `$hmean()`, `$min()`, `$max()`, `$range()`, `$var()`,
#' `$stdev()`, `$skewness()`, `$kurtosis()`, all for a sample, and `$mode()` of the stored values;
#' `summary()` gives them at once. `$hist()` is a data frame of the `centre` and the `share` of each
#' cell; what lies outside is in the end cells. `$stored()` gives the first values. `$reset()` forgets
#' all values. `$merge(other)` adds what another object has counted; one without values takes the
#' other's histogram. `$save(file)` and `$load(file)` keep the object beyond the session, with six
#' decimals; a saved workspace does not.
#'
#' @section Methods of `quantiles()`:
#' `$result()`, with a warning when the rank sought was dropped; `$cdf(x)`, the share of values up to
#' each x; `$length()`, `$min()` and `$max()` of the values kept; `$state()`, numbers that tell of the
#' work; `$reset(p)` begins anew. Behind 10,000 values a bootstrap draws random numbers, which
#' [set.seed()] repeats.
#'
#' @section Methods of `quantiles2()`:
#' `$result()`, `$cdf(x)`, `$state()`. Estimates that dropped too many values are left out of the
#' result with a warning.
#'
#' @param lo,hi the ends of the histogram; without them there is none
#' @param bins the number of its cells, of equal width
#' @param p the probability of the quantile
#' @param ... estimates made by `quantiles()`, all of the same p
#' @param object such an object
#' @return a reference object. Methods stop when the object comes from another session.
#' @examples
#' s <- simulation(-4, 4, 16)
#' for (k in 1:10) s$add(rnorm(1000))
#' s
#' s$merge(simulation(-4, 4, 16)$add(rnorm(1000)))$length()
#' plot(s$hist(), type = "h")
#'
#' q <- quantiles(0.99)$add(rexp(20000))
#' q$result()
#' quantiles2(q, quantiles(0.99)$add(rexp(20000)))$result()
#' @export
simulation <- function(lo = NULL, hi = NULL, bins = 0) {
  histogram <- !is.null(lo) || !is.null(hi)
  bins <- as_whole_arg(bins, to = 1e7)
  lo <- if (histogram) as_number_arg(lo) else 0
  hi <- if (histogram) as_number_arg(hi) else 0
  if (bins < 0)
    refuse("SIMULATION", "simulation(double,double,int)", "ujemna liczba przedzialow")
  if (!histogram && bins > 0) misused("bins", "be left out where `lo` and `hi` are")
  pointer <- simulation_new(lo, hi, bins, histogram)
  figure <- function(name) {
    force(name)
    function() simulation_summary(pointer)[[name]]
  }
  names <- c("length", "sum", "mean", "gmean", "hmean", "min", "max", "range", "var", "stdev",
             "skewness", "kurtosis")
  self <- new_object("simulation", pointer, c(sapply(names, figure, simplify = FALSE), list(
    add = function(x, na.rm = FALSE) {
      spoken(simulation_add(pointer, as_stream_arg(x, na.rm)))
      invisible(self)
    },
    reset = function() {
      simulation_reset(pointer)
      invisible(self)
    },
    mode = function() simulation_mode(pointer),
    hist = function() {
      x <- simulation_hist(pointer)
      data.frame(centre = simulation_edges(pointer)[1] + x[, 1], share = x[, 2])
    },
    stored = function() simulation_stored(pointer),
    merge = function(other) {
      merge_simulation(pointer, as_pointer_arg(other, "simulation"))
      invisible(self)
    },
    save = function(file) {
      write_simulation(pointer, path.expand(as_text_arg(file)))
      invisible(file)
    },
    load = function(file) {
      read_simulation(pointer, path.expand(as_text_arg(file)))
      invisible(self)
    })))
  self
}

merge_simulation <- function(pointer, other) {
  routine <- "operator +=(simulation)"
  n <- simulation_summary(pointer)[["length"]]
  if (!identical(simulation_edges(pointer), simulation_edges(other)) && n > 0)
    refuse("SIMULATION", routine, "Niekompatybilna wielkosc histogramow")
  if (simulation_summary(other)[["length"]] > .Machine$integer.max - n)
    refuse("SIMULATION", routine, "przekroczona najwieksza liczba wartosci")
  simulation_merge(pointer, other)
}

# The library passes over a file that cannot be opened.
write_simulation <- function(pointer, file) {
  simulation_summary(pointer)
  if (dir.exists(file) || !suppressWarnings(file.create(file)))
    stop("`file` could not be opened for writing: ", file, call. = FALSE)
  said(simulation_save(pointer, file))
}

read_simulation <- function(pointer, file) {
  if (!file.exists(file) || file.access(file, 4) != 0)
    stop("`file` could not be opened: ", file, call. = FALSE)
  said(simulation_load(pointer, file))
}

# What the library only warns of although nothing was done, as the error that it is in R.
said <- function(text) {
  for (saying in sayings(text))
    stop(structure(class = c("varnow_refusal", "error", "condition"),
                   list(message = saying, call = NULL)))
}

#' @rdname simulation
#' @export
summary.simulation <- function(object, ...) {
  pointer <- as_pointer_arg(object, "simulation")
  c(simulation_summary(pointer), mode = simulation_mode(pointer))
}

#' @export
format.simulation <- function(x, ...) {
  pointer <- as_pointer_arg(x, "simulation")
  figures <- simulation_summary(pointer)
  edges <- simulation_edges(pointer)
  paste0("simulation of ", format(figures[["length"]], big.mark = ","), " values",
         if (figures[["length"]] > 0)
           paste0(", mean ", format(figures[["mean"]]), ", deviation ", format(figures[["stdev"]]),
                  ", from ", format(figures[["min"]]), " to ", format(figures[["max"]])),
         if (edges[3] > 0) paste0("; ", edges[3], " cells from ", format(edges[1]), " to ",
                                  format(edges[2])))
}

#' @rdname simulation
#' @export
quantiles <- function(p) {
  pointer <- quantiles_new(as_number_arg(p, from = 0, to = 1))
  state <- function(name) quantiles_state(pointer)[[name]]
  self <- new_object("quantiles", pointer, list(
    add = function(x, na.rm = FALSE) {
      spoken(quantiles_add(pointer, as_stream_arg(x, na.rm)))
      invisible(self)
    },
    reset = function(p) {
      quantiles_reset(pointer, as_number_arg(p, from = 0, to = 1))
      invisible(self)
    },
    result = function() spoken(quantiles_result(pointer)),
    cdf = function(x) spoken(quantiles_cdf(pointer, as_stream_arg(x, FALSE))),
    length = function() state("length"),
    min = function() state("min"),
    max = function() state("max"),
    state = function() quantiles_state(pointer)))
  self
}

#' @export
format.quantiles <- function(x, ...) {
  state <- quantiles_state(as_pointer_arg(x, "quantiles"))
  paste0("quantile at ", format(state[["p"]]), " of ", format(state[["length"]], big.mark = ","),
         " values, ", format(state[["used"]], big.mark = ","), " kept")
}

#' @rdname simulation
#' @export
quantiles2 <- function(...) {
  pointer <- quantiles2_new()
  self <- new_object("quantiles2", pointer, list(
    add = function(x) {
      estimate <- as_pointer_arg(x, "quantiles")
      state <- quantiles2_state(pointer)
      if (state[["count"]] > 0 && quantiles_state(estimate)[["p"]] != state[["p"]])
        refuse("QUANTILES2", "operator +=(quantiles)", "Incompatible p!")
      quantiles2_add(pointer, estimate)
      invisible(self)
    },
    result = function() {
      switch(quantiles2_obstacle(pointer),
             search_range = refuse("QUANTILES2", "void search_range(double,double)",
                                   "Range not found!"),
             qfzero = refuse("QUANTILES2", "double qfzero(double,double,double)", "Sign error!"))
      spoken(quantiles2_result(pointer))
    },
    cdf = function(x) spoken(quantiles2_cdf(pointer, as_stream_arg(x, FALSE))),
    state = function() quantiles2_state(pointer)))
  for (estimate in list(...)) self$add(estimate)
  self
}

#' @export
format.quantiles2 <- function(x, ...) {
  state <- quantiles2_state(as_pointer_arg(x, "quantiles2"))
  paste0(state[["count"]], " estimates of the quantile at ", format(state[["p"]]))
}
