lines_file <- function(...) {
  file <- tempfile()
  writeBin(charToRaw(paste0(..., collapse = "")), file)
  file
}

test_that("columns get the type of all their fields", {
  file <- lines_file("w;x;d;l;t;e;m\n1;1.5;1e3;TRUE;1,5;;NA\n-2;;+.5;;x;;NA\n3;0;2.;FALSE;-;;7")
  expect_identical(read_delimited(file, ";"),
                   data.frame(w = c(1L, -2L, 3L), x = c(1.5, NA, 0), d = c(1000, 0.5, 2),
                              l = c(TRUE, NA, FALSE), t = c("1,5", "x", "-"), e = NA,
                              m = c(NA, NA, 7L)))
  expect_identical(read_delimited(file, ";", text = c("w", "m"), na = "-")[c("w", "t", "m")],
                   data.frame(w = c("1", "-2", "3"), t = c("1,5", "x", NA), m = c("NA", "NA", "7")))
  expect_identical(vapply(read_delimited(file, ";", text = TRUE), typeof, ""),
                   c(w = "character", x = "character", d = "character", l = "character",
                     t = "character", e = "character", m = "character"))
  expect_identical(read_delimited(lines_file("\xef\xbb\xbfa;b\n 1;NaN\n2 ;-Inf \n1 2; \n"), ";"),
                   data.frame(a = c(" 1", "2 ", "1 2"), b = c("NaN", "-Inf ", " ")))
  expect_identical(read_delimited(lines_file("\xef\xbb\xbfa;b\n 1;NaN\n2 ;-Inf \n"), ";"),
                   data.frame(a = 1:2, b = c(NaN, -Inf)))
  comma <- lines_file("\"r 1\"\t1,5\nr2\t2\n")
  expect_identical(read_delimited(comma, header = FALSE, row_names = TRUE, dec = ","),
                   data.frame(V1 = c(1.5, 2), row.names = c("r 1", "r2")))
  expect_identical(read_delimited(comma, header = FALSE, row_names = TRUE, as = "matrix"),
                   matrix(c(1.5, 2), 2, dimnames = list(c("r 1", "r2"), NULL)))
  expect_identical(dim(read_delimited(lines_file(""))), c(0L, 0L))
  expect_identical(dim(read_delimited(lines_file("a\tb\n"))), c(0L, 2L))
})

test_that("what is written comes back", {
  x <- data.frame(n = c(0.1, 1 / 3, NA, -1e-300), u = c(-Inf, Inf, NA, 1e15 / 7), i = c(1L, NA, 3L, 4L), t = c("a, b", "", NA, "\u017c"),
                  f = factor(c("u", "v", NA, "u")), d = as.Date("2024-02-29") + 0:3,
                  l = c(TRUE, NA, FALSE, TRUE), row.names = c("p", "q", "r", "s"))
  back <- transform(x, t = ifelse(t == "", NA, t), f = as.character(f), d = as.character(d))
  for (gz in c(FALSE, TRUE)) {
    file <- tempfile(fileext = if (gz) ".gz" else "")
    expect_identical(write_delimited(x, file, row_names = TRUE, gz = gz), file)
    expect_identical(read_delimited(file, row_names = TRUE, gz = gz), back)
    write_delimited(x, file, ";", quotes = TRUE, dec = ",", header = FALSE, gz = gz)
    expect_equal(read_delimited(file, ";", dec = ",", header = FALSE, gz = gz)[[3]], x$i)
    m <- matrix(c(1.25, NA, 3, 4), 2, dimnames = list(c("a", "b"), c("c", "d")))
    write_delimited(m, file, row_names = TRUE, gz = gz)
    expect_identical(read_delimited(file, as = "matrix", row_names = TRUE, gz = gz), m)
  }
  expect_identical(readLines(write_delimited(data.frame(a = 1.5, b = NA), tempfile(), ";")),
                   c("a;b", "1.5;"))
})

test_that("texts have the encoding that is asked for", {
  x <- data.frame(a = c("\u017c\u00f3\u0142w", NA))
  names(x) <- "\u0105"
  file <- write_delimited(x, tempfile(), encoding = "CP1250")
  expect_identical(readBin(file, "raw", 9), as.raw(c(0xb9, 0x0a, 0xbf, 0xf3, 0xb3, 0x77, 0x0a, 0x0a)))
  expect_identical(read_delimited(file, encoding = "CP1250"), x)
  m <- matrix(1, dimnames = list(NULL, "\u0105"))
  write_delimited(m, file, encoding = "CP1250")
  expect_identical(read_delimited(file, as = "matrix", encoding = "CP1250"), m)
  expect_error(write_delimited(x, file, encoding = "ASCII"), "encoding")
  expect_error(read_delimited(file, encoding = "no such"), "no such")
  expect_error(read_delimited(file, encoding = NA), "encoding")
})

test_that("bad files and misuse are errors of R", {
  readable <- "nieudane otwarcie pliku do odczytu"
  reads <- function(why, file, ...)
    expect_refusal(read_delimited(file, ...), "TABLE", "int readtxt(char *)", why,
                   paste0("plik: ", file))
  reads(readable, tempfile())
  reads(readable, tempdir())
  reads(readable, lines_file("no gzip"), gz = TRUE)
  expect_warning(read_delimited(lines_file("a\n1\n", "\xff", "2\n")), "0xFF")
  reads("zmienna liczba elementow w wierszu: 3", lines_file("a\tb\n1\t2\n3\n"))
  reads("zmienna liczba elementow w wierszu: 3", lines_file("a\tb\n1\t2\n3"))
  long <- strrep("x", 256)
  reads("nazwa kolumny ma zbyt wiele znakow", lines_file(long, "\n1\n"))
  reads("tekst ma zbyt wiele znakow", lines_file("a\n", long, "\n"))
  file <- lines_file(long, "\n")
  expect_refusal(read_delimited(file, header = FALSE, as = "matrix"), "MATRIX",
                 "int readtxt(char *)", "tekst ma zbyt wiele znakow", paste0("plik: ", file))
})

test_that("what just fits is read", {
  long <- strrep("x", 255)
  expect_identical(read_delimited(lines_file("\"", long, "\"\r\n\"", long, "\"\r\n")),
                   structure(data.frame(long), names = long))
})

test_that("links are followed, and what is no file is left alone", {
  skip_on_os("windows")
  file <- lines_file("")
  link <- tempfile()
  file.symlink(file, link)
  write_delimited(cars, link)
  expect_equal(read_delimited(file), cars)
  expect_identical(Sys.readlink(link), file)
  queue <- tempfile()
  system2("mkfifo", queue)
  expect_error(read_delimited(queue), class = "varnow_refusal")
  expect_error(write_delimited(cars, queue), class = "varnow_refusal")
})

test_that("writing fails as an error of R", {
  for (file in c(tempdir(), file.path(tempfile(), "x")))
    expect_refusal(write_delimited(cars, file), "TABLE", "int writetxt(char *)",
                   "nieudane otwarcie pliku do zapisu", paste0("plik: ", file))
  expect_error(write_delimited(data.frame(a = "x\ty"), tempfile()), "separator")
  expect_error(write_delimited(data.frame(a = I(list(1))), tempfile()), "vector")
  expect_error(write_delimited(data.frame(a = I(diag(2))), tempfile()), "vector")
  expect_misuse(write_delimited, setdiff(not_numbers, Filter(is.data.frame, not_numbers)),
                file = tempfile())
  expect_misuse(write_delimited, list(NULL, NA_character_, c("a", "b"), 1), x = cars)
  file <- lines_file("a\n1\n")
  expect_misuse(read_delimited, list(NULL, NA, 1, character(), c("a", "b")))
  for (bad in list(list(sep = ""), list(sep = "ab"), list(sep = "\n"), list(sep = NA), list(dec = "x"),
                   list(dec = "\t"), list(sep = ",", dec = ","), list(header = NA),
                   list(row_names = "a"), list(quotes = 1), list(na = 1), list(text = NA),
                   list(as = "list"), list(gz = NULL), list(progress = 2))) {
    expect_error(do.call(read_delimited, c(list(file), bad)), "must", info = deparse1(bad))
    if (!any(c("na", "text", "as") %in% names(bad)))
      expect_error(do.call(write_delimited, c(list(cars, tempfile()), bad)), "must")
  }
})

test_that("R survives odd arguments", {
  file <- write_delimited(mtcars, tempfile())
  expect_survival("read_delimited", file, "\t", TRUE, FALSE, FALSE, ".", "NA", FALSE, "data.frame", FALSE, "")
  expect_survival("read_delimited", file, "\t", TRUE, TRUE, TRUE, ".", "NA", FALSE, "matrix", FALSE)
  expect_survival("write_delimited", cars, tempfile(), "\t", TRUE, TRUE, FALSE, ".", FALSE, "")
  expect_survival("write_delimited", as.matrix(cars), tempfile(), ";", TRUE, TRUE, TRUE, ",", TRUE, "latin1")
})
