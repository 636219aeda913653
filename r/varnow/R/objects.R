# Reference objects: environments of methods around a pointer to an object of the library.
new_object <- function(class, pointer, methods) {
  self <- list2env(c(list(pointer = pointer), methods), parent = emptyenv())
  class(self) <- c(class, "varnow_object")
  lockEnvironment(self, bindings = TRUE)
  self
}

# The pointer of an object of the class.
as_pointer_arg <- function(x, class, what = deparse1(substitute(x))) {
  if (!is.environment(x) || !inherits(x, class))
    misused(what, paste0("be an object of the class \"", class, "\""))
  get0("pointer", x, inherits = FALSE)
}

# The value of a call that also gave what the library said, each saying once, as a warning.
spoken <- function(result) {
  for (saying in sayings(result[[2]])) warning(saying, call. = FALSE)
  result[[1]]
}

sayings <- function(text) {
  lines <- strsplit(text, "\n", fixed = TRUE)[[1]]
  starts <- which(!nzchar(lines) & c(grepl("^[A-Z0-9_]+: ", lines[-1]), FALSE))
  if (!length(starts)) return(character())
  ends <- c(starts[-1] - 1, length(lines))
  unique(trimws(mapply(function(a, b) paste(lines[a:b], collapse = "\n"), starts, ends)))
}

# Numbers of a stream, as they are where that spares a copy.
as_stream_arg <- function(x, na.rm, what = "x") {
  as_flag_arg(na.rm)
  if (!is.double(x) || is.object(x) || length(dim(x)) > 2) x <- as_matrix_arg(x, what)
  if (na.rm && anyNA(x)) x[!is.na(x)] else x
}

#' @export
format.varnow_object <- function(x, ...) paste0("<", class(x)[1], ">")

#' @export
print.varnow_object <- function(x, ...) {
  cat(format(x), "\n", sep = "")
  invisible(x)
}
