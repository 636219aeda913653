bytes_of <- function(...) readChar(file.path(...), 1e6, useBytes = TRUE)

test_that("a page holds tabs, chapters, tables and links in the order of the calls", {
  folder <- tempfile()
  dir.create(folder)
  page <- html("Cars", "about", "a, b", scripts = "js")
  page$background("#ffffff")$tab("One")$chapter("First", bold = TRUE, size = 4L)
  page$htext("text", italic = TRUE, underline = TRUE, color = "red")$paragraph("p", align = "center")
  page$htable(matrix(c(1.234, 0.5, NA, 2), 2, dimnames = list(c("r1", "r2"), c("x", "y"))),
              format = c(2, 0), caption = "Table", border = 1L)
  page$image("a.png", "pic/", "center", 10, 20)$href("u.html", "label")$endline(2)
  page$tab("Two")$htable(data.frame(n = c(100000, 2.5), t = c("a", NA)), format = c(-1, 2))
  page$js("drawn", "", 300, 200)
  expect_identical(page$save(folder, "p.html"), file.path(folder, "p.html"))
  text <- bytes_of(folder, "p.html")
  expect_identical(text, page$page())
  head <- paste0("  <script src='js/tabs.js'></script>\n  <link rel=\"stylesheet\" type=\"text/css\" ",
                 "href=\"varnow.css\">\n</head>\n")
  body <- paste0(
    "<body bgcolor='#ffffff' onload='drawn();'>\n",
    "<button class=\"tablink\" onclick=\"openPage('One', this, 'green')\">One</button>\n",
    "<button class=\"tablink\" onclick=\"openPage('Two', this, 'green')\">Two</button>\n",
    "<div id=\"One\" class=\"tabcontent\">\n<div class=\"sidenav\">\n<a href=\"#C1\">First</a>\n",
    "</div>\n\n<div class=\"main\">\n  <a name=\"C1\"></a>\n  <font size='4'><b>\n  First\n",
    "  </b></font>\n  <font color='red' size='1'><i><u>\n  text\n  </u></i></font>\n",
    "  <p align='center' font size='1'>\n  p\n  </p>\n",
    "  <table border='1' cellpadding='4' cellspacing='2'>\n  <caption>Table</caption>\n",
    "  <tr><th>&nbsp</th><th>x</th><th>y</th></tr>\n",
    "  <tr><th>r1</th><td>1.23</td><td></td></tr>\n  <tr><th>r2</th><td>0.50</td><td>2</td></tr>\n",
    "  </table>\n  <center><img src='pic/a.png' alt='Blad w add_image: nie znaleziono obrazka!' ",
    "width='10' height='20'/></center>\n  <a href='u.html'>label</a>\n  <br/>\n  <br/>\n",
    "</div>\n</div>\n\n<div id=\"Two\" class=\"tabcontent\">\n<div class=\"main\">\n",
    "  <table border='4' cellpadding='4' cellspacing='2'>\n  <tr><th>n</th><th>t</th></tr>\n",
    "  <tr><td>10000000.0</td><td>a</td></tr>\n  <tr><td>250.0</td><td></td></tr>\n  </table>\n",
    "  <script src='drawn.js'></script>\n  <canvas id='drawn' width=300 height=200>\n",
    "    <div id='err_msg'>No support for HTML 5 canvas element</div>\n  </canvas>\n",
    "</div>\n</div>\n\n\n</body>\n</html>")
  expect_identical(substring(text, nchar(text) - nchar(body) - nchar(head) + 1), paste0(head, body))
  expect_match(bytes_of(folder, "varnow.css"), ".tablink:hover", fixed = TRUE)
  page$clear()$tab("Only")
  expect_no_match(page$page(), "tablink|One")
  expect_true(all(file.exists(file.path(system.file("js", package = "varnow"),
                                        c("tabs.js", "updating.js")))))
  expect_match(html("a")$page(), system.file("js", package = "varnow"), fixed = TRUE)
})

test_that("letters go to the page in its encoding, others by number", {
  skip_if_not(l10n_info()$`UTF-8`)
  page <- html("a")
  page$tab("b")$htext("\u0142\u03b1")
  page$save(tempdir(), "letters.html")
  raw <- readBin(file.path(tempdir(), "letters.html"), "raw", 1e5)
  expect_length(grepRaw(as.raw(c(0xb3, charToRaw("&#945;"))), raw), 1)
})

test_that("a script holds the statements, and files beside it the data", {
  folder <- tempfile()
  dir.create(folder)
  g <- gplot("s", folder)
  g$title("100%%")$xrange(0, 1.5)$view(60, 30)$boxwidth(2)$samples(9)$parametric(TRUE)$reset()
  g$label(1, "x", 0, 1)$multiplot(TRUE, 1, 2)$multiplot(FALSE)$sep("-", 3)$speccom("c", "=", 2)$endl(1)
  g$instc("a")$inst("b")$comment("d")$pause(-1, "go")
  g$plot(data.frame(x = c(1, NA), y = 2:3), "1:2", "points", "points",
         list(c(1.5, 2.5), with = "lines"), list("sin(x)", title = "notitle"))
  g$splot(data.frame(a = c("p", "q")))$close()$title("late")
  expect_identical(readLines(file.path(folder, "s.plt")), c(
    "set title '100%'", "set xrange [0.000000:1.500000]", "set view 60.000000,30.000000", "set boxwidth 2.000000",
    "set samples 9", "set parametric", "reset", "set label 1 'x' at 0.000000,1.000000",
    "set multiplot layout 1,2", "unset multiplot", "# ---", "# ==", "# c", "# ==", "", "a b", "# d",
    "pause -1 'go'", "",
    "plot 's_points.dat' using 1:2 title 'points' with points, 's_1-2.dat' with lines, sin(x) notitle",
    "splot 's_2-1.dat'"))
  expect_identical(readLines(file.path(folder, "s_1-2.dat")), c("1.500000", "2.500000"))
  expect_identical(readLines(file.path(folder, "s_points.dat"))[1], "1.000000\t2.000000")
  expect_identical(readLines(file.path(folder, "s_2-1.dat")), c("p", "q"))
})

test_that("misuse is an error of R", {
  page <- html("a")
  cell <- "Text & operator ()(int,int)"
  outside <- "indeks poza zakresem"
  for (early in list(quote(page$htext("x")), quote(page$htable(1:2)), quote(page$chapter("x")),
                     quote(page$js("x", "", 1, 1)), quote(page$endline(1))))
    expect_refusal(eval(early), "TABLE", cell, outside, "1 x 10 : ( 1 , 0 )")
  for (k in 1:10) page$tab("t")
  expect_refusal(page$tab("t"), "TABLE", cell, outside, "1 x 10 : ( 1 , 11 )")
  for (k in 1:10) page$chapter("c")
  expect_refusal(page$chapter("c"), "TABLE", cell, outside, "10 x 10 : ( 11 , 10 )")
  length_text <- "wektor definiujacy format kolumn ma dlugosc niezgodna z liczba kolumn"
  for (kind in list(list(diag(2), "void add_matrix(matrix,matrix,table_properties)", "macierzy"),
                    list(letters, "void add_table(table,matrix,table_properties)", "tabeli"))) {
    expect_refusal(page$htable(kind[[1]], 1:3), "HTML", kind[[2]], paste(length_text, kind[[3]]))
    expect_refusal(page$htable(kind[[1]], diag(2)), "HTML", kind[[2]],
                   "zmienna definiujaca format kolumn nie jest wektorem")
  }
  for (dir in c(tempfile(), if (file.exists("/dev/full")) "/dev")) {
    file <- if (dir == "/dev") "full" else "x"
    expect_refusal(page$save(dir, file), "HTML", "void save(Text,Text)",
                   "nieudane otwarcie pliku do zapisu", paste0("katalog: ", dir, "/, plik: ", file))
  }
  expect_error(page$htable(1, caption = 1), "one text")
  expect_error(page$htable(1, colour = "x"), "must")
  expect_error(gplot("a", tempfile()), "could not be opened")
  g <- gplot("a", tempdir())
  expect_error(g$plot(cars, title = "no/where"), "could not be written")
  expect_error(do.call(g$plot, c(list(cars, "", "", ""), rep(list(list(cars)), 5))), "four")
  expect_error(g$plot(cars, "", "", "", cars), "lists")
  expect_error(g$plot(cars[0, ]), "rows and columns")
  expect_error(g$sep("ab", 2), "one character")
})

test_that("R survives odd arguments", {
  expect_survival("html", "a", "b", "c", "d/", "e/")
  expect_survival("gplot", "a", tempdir())
  page <- html("a")$tab("b")
  g <- gplot("odd", tempdir())
  for (object in list(page, g)) for (method in setdiff(ls(object), c("pointer", "tab", "close"))) {
    name <- paste0("odd_", method)
    assign(name, object[[method]], envir = globalenv())
    arguments <- switch(method, page = , clear = , reset = list(), htable = list(diag(2), c(1, 2)),
                        image = list("a", "b", "left", 1, 2), href = list("a", "b", "c", "d"),
                        js = list("a", "b", 1, 2), plot = , splot = list(cars, "1:2", "t", "lines", list(cars)),
                        save = list(tempdir(), "p.html"), label = list(1, "x", 2, 3),
                        multiplot = list(TRUE, 1, 2), sep = list("-", 3), pause = list(1, "x"),
                        speccom = list("x", "-", 3), xrange = , yrange = , zrange = ,
                        view = list(1, 2), list("a"))
    if (inherits(object, "html") && method == "clear") next
    do.call(expect_survival, c(list(name), arguments))
    rm(list = name, envir = globalenv())
  }
})
