# One byte that separates fields.
as_separator_arg <- function(sep) {
  as_text_arg(sep, "sep")
  if (nchar(sep, "bytes") != 1 || sep %in% c("\n", "\r", "\""))
    misused("sep", "be one character, and no quote or line end")
  sep
}

as_decimal_arg <- function(dec, sep) {
  as_choice_arg(dec, c(".", ","), "dec")
  if (dec == sep) misused("dec", "differ from `sep`")
  dec
}

#' Delimited files
#'
#' `read_delimited()` reads a text file of lines with the same number of fields. An empty field is a
#' missing value, and so are the texts of `na`. A column whose other fields are all numbers (whole
#' numbers, `TRUE` or `FALSE`) becomes such a vector, any other one texts. `write_delimited()` writes
#' such a file: missing values as empty fields, the numbers of a data frame with as many digits as
#' bring them back, those of a matrix with six decimals.
#'
#' The writer puts the file in its place when it is whole. The reader refuses lines with different
#' numbers of fields and fields of more than 255 characters. A quote is dropped wherever it stands;
#' it does not protect a separator. The library takes the byte 0xFF for the end of a file; the reader
#' warns. Only regular files are read and replaced.
#'
#' @param file name of the file
#' @param sep the character between fields
#' @param header whether the first line holds the names of the columns
#' @param row_names whether the first field of each line is the name of the row
#' @param quotes whether double quotes are dropped on reading; whether every field is quoted on
#'   writing
#' @param dec the decimal sign, `"."` or `","`
#' @param na texts that stand for missing values
#' @param text names of columns that stay texts; `TRUE` for all of them
#' @param as `"data.frame"`; or `"matrix"` for a file of numbers only, in which a field is read as
#'   far as it is a number, and both decimal signs count
#' @param encoding how the texts of the file are encoded, as [iconv()] names it, such as `"CP1250"`;
#'   by default as R's own texts are
#' @param gz whether the file is packed by gzip
#' @param progress whether the percentage done is shown while the rows are read or, for a matrix,
#'   written
#' @param x a matrix or data frame
#' @return `read_delimited()`: a data frame or a matrix. `write_delimited()`: the name of the file,
#'   invisibly.
#' @examples
#' credit <- read_delimited(system.file("extdata", "credit.txt", package = "varnow"), sep = ";")
#' str(credit)
#' file <- tempfile(fileext = ".txt.gz")
#' write_delimited(credit, file)
#' identical(read_delimited(file), credit)
#' @export
read_delimited <- function(file, sep = "\t", header = TRUE, row_names = FALSE, quotes = TRUE,
                           dec = ".", na = "NA", text = FALSE, as = c("data.frame", "matrix"),
                           gz = grepl("\\.gz$", file), encoding = "", progress = FALSE) {
  as_text_arg(file)
  as_text_arg(encoding)
  as_separator_arg(sep)
  for (flag in c("header", "row_names", "quotes", "gz", "progress")) as_flag_arg(get(flag), flag)
  as <- as_choice_arg(as, c("data.frame", "matrix"))
  if (as != "matrix") as_decimal_arg(dec, sep)
  if (!is.character(na) || anyNA(na)) misused("na", "be texts")
  if (!isTRUE(text) && !isFALSE(text) && (!is.character(text) || anyNA(text)))
    misused("text", "be TRUE, FALSE or names of columns")
  unreadable <- function(why) refuse(if (as == "matrix") "MATRIX" else "TABLE",
                                     "int readtxt(char *)", why, paste0("plik: ", file))
  path <- path.expand(file)
  if (!files_regular(path) || file.access(path, 4) != 0)
    unreadable("nieudane otwarcie pliku do odczytu")
  if (gz) {
    plain <- tempfile("varnow")
    on.exit(unlink(plain))
    if (!files_gunzip(path, plain)) unreadable("nieudane otwarcie pliku do odczytu")
    path <- plain
  }
  look <- files_look(path, sep, quotes, header)
  if (nzchar(look[[1]])) unreadable(look[[1]])
  if (look[[3]]) warning("reading ends at a byte 0xFF of `file`", call. = FALSE)
  if (look[[2]]) {
    # the library counts lines by their ends
    if (!gz) {
      plain <- tempfile("varnow")
      on.exit(unlink(plain))
      file.copy(path, plain)
      Sys.chmod(plain, "600")
      path <- plain
    }
    cat("\n", file = path, append = TRUE)
  }
  if (as == "matrix") {
    x <- files_read_matrix(path, sep, header, row_names, quotes, progress)
    if (!is.null(dimnames(x))) dimnames(x) <- lapply(dimnames(x), recode, encoding, "")
    return(x)
  }
  frame <- files_read_frame(path, sep, header, row_names, quotes, progress, dec, enc2native(na),
                            if (is.character(text)) enc2native(text) else text)
  columns <- lapply(frame[[1]], recode, encoding, "")
  names(columns) <- recode(names(columns), encoding, "")
  if (!header) names(columns) <- paste0("V", seq_along(columns))
  as_frame(columns, if (row_names) make.unique(recode(frame[[2]], encoding, "")),
           length(frame[[2]]))
}

# Texts in another encoding; anything else as it is.
recode <- function(x, from, to) {
  if (!is.character(x)) return(x)
  if (from == "") x <- enc2native(x)
  if (from == to) return(x)
  r <- iconv(x, from, to)
  if (anyNA(r[!is.na(x)])) misused("encoding", "fit the texts")
  r
}

#' @rdname read_delimited
#' @export
write_delimited <- function(x, file, sep = "\t", header = TRUE, row_names = FALSE, quotes = FALSE,
                            dec = ".", gz = grepl("\\.gz$", file), encoding = "", progress = FALSE) {
  as_text_arg(encoding)
  if (!is.data.frame(x)) x <- as_matrix_arg(x)
  as_text_arg(file)
  as_separator_arg(sep)
  for (flag in c("header", "row_names", "quotes", "gz", "progress")) as_flag_arg(get(flag), flag)
  as_decimal_arg(dec, sep)
  # behind a link; devices and the like are not to be replaced
  path <- if (files_regular(path.expand(file))) normalizePath(file) else path.expand(file)
  draft <- tempfile(paste0("_", basename(path)), dirname(path))
  drafts <- c(draft, paste0(draft, ".gz"))
  on.exit(unlink(drafts))
  done <- dir.exists(dirname(draft)) && (files_regular(path) || !file.exists(path)) &&
    suppressWarnings(write_draft(x, draft, sep, header, row_names, quotes, dec, encoding,
                                 progress)) &&
    (!gz || files_gzip(draft, drafts[2])) &&
    suppressWarnings(file.rename(drafts[1 + gz], path))
  if (!done)
    refuse(if (is.data.frame(x)) "TABLE" else "MATRIX", "int writetxt(char *)",
           "nieudane otwarcie pliku do zapisu", paste0("plik: ", file))
  invisible(file)
}

write_draft <- function(x, draft, sep, header, row_names, quotes, dec, encoding, progress) {
  if (!is.data.frame(x)) {
    check_fields(unlist(dimnames(x)), sep, quotes)
    if (!is.null(dimnames(x))) dimnames(x) <- lapply(dimnames(x), recode, "", encoding)
    return(files_write_matrix(x, draft, sep, header, row_names, quotes, progress, dec))
  }
  columns <- lapply(x, function(column)
    if (is.numeric(column) && is.null(attr(column, "class")) && is.null(dim(column)))
      as.double(column)
    else as_texts(column, "each column of x"))
  rows <- if (row_names) row.names(x) else character()
  check_fields(c(names(x), rows), sep, quotes)
  for (column in columns) if (is.character(column)) check_fields(column, sep, quotes)
  files_write_frame(lapply(columns, recode, "", encoding),
                    recode(names(x), "", encoding), nrow(x), recode(rows, "", encoding),
                    draft, sep, header, quotes, dec)
}

# Without quotes around it a text with a separator or a line end would be more than one field.
check_fields <- function(texts, sep, quotes) {
  if (!quotes && any(grepl(sep, texts, fixed = TRUE) | grepl("\n", texts, fixed = TRUE)))
    misused("x", "hold no text with a separator or a line end, unless `quotes` is TRUE")
}
