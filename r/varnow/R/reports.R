#' Reports as HTML pages
#'
#' A report is collected by the methods of a reference object, and written by `$save()`. It has up to
#' 10 tabs of up to 10 chapters; all content belongs to the tab begun last. Texts go to the page as
#' they are, markup included; the page is in ISO 8859-2, and other characters become numeric
#' references. Every method but `$save()` and `$page()` gives the object back, invisibly.
#'
#' @section Methods:
#' * `$tab(x)`, `$chapter(x, ...)` begin a tab, and a heading that the side navigation links to.
#' * `$htext(x, ...)`, `$paragraph(x, ..., align = "left")` add text. Further arguments give the
#'   format: `bold`, `italic`, `underline` (`TRUE` or `FALSE`), `size` (a whole number), `color`,
#'   `face`.
#' * `$htable(x, format = NULL, ...)` adds a data frame, matrix or vector as a table. `format` has a
#'   number for each column: above 0 so many decimals, 0 a whole number, below 0 a percentage with
#'   so many decimals. Further arguments: the texts `caption`, `caption_align`, `width`, `height`,
#'   `align`, `bgcolor`, `header_bgcolor`; `show_colnames` and `show_rownames` (`TRUE` or `FALSE`);
#'   the whole numbers `border`, `cellpadding`, `cellspacing`.
#' * `$image(file, dir = "", align = "left", w, h)` adds a picture, `$href(url, label, dir = "",
#'   picture = "")` a link, `$endline(n = 1)` empty lines, `$js(name, dir = "", w, h)` a canvas that
#'   gnuplot's script `name` draws.
#' * `$background(x)` sets the colour of the page; `$clear()` forgets all but the head.
#' * `$save(dir, file)` writes the page, and its style sheet `varnow.css`, into a folder and gives the
#'   name of the page, invisibly; `$page()` gives the text of the page.
#'
#' @param title,description,keywords texts of the page's head
#' @param scripts the folder of `tabs.js` and `updating.js` as the page is to name it, by default the
#'   one of this package
#' @param gnuplot_scripts likewise the folder of gnuplot's own scripts, which only canvases need
#' @return a reference object
#' @examples
#' page <- html("Cars")
#' page$tab("Data")$chapter("Speed", bold = TRUE, size = 5)
#' page$htable(head(cars), format = c(0, 2), caption = "The first cars")
#' page$save(tempdir(), "cars.html")
#' @export
html <- function(title, description = "", keywords = "",
                 scripts = system.file("js", package = "varnow"), gnuplot_scripts = "") {
  for (name in c("title", "description", "keywords", "scripts", "gnuplot_scripts"))
    as_text_arg(get(name), name)
  pointer <- html_new(title, description, keywords, as_folder(scripts), as_folder(gnuplot_scripts))
  part <- function(name, x, settings = list()) {
    html_room(pointer, name)
    html_text(pointer, name, x, settings)
    invisible(self)
  }
  self <- new_object("html", pointer, list(
    background = function(x) part("background", as_text_arg(x)),
    tab = function(x) part("tab", as_text_arg(x)),
    htext = function(x, ...) part("htext", as_text_arg(x), as_settings(list(...), text_settings)),
    chapter = function(x, ...)
      part("chapter", as_text_arg(x), as_settings(list(...), text_settings)),
    paragraph = function(x, ..., align = "left")
      part("paragraph", as_text_arg(x), c(as_settings(list(...), text_settings),
                                          list(align = as_text_arg(align)))),
    htable = function(x, format = NULL, ...) {
      html_room(pointer)
      put_table(pointer, x, format, as_settings(list(...), table_settings))
      invisible(self)
    },
    image = function(file, dir = "", align = "left", w, h) {
      as_text_arg(file)
      as_text_arg(align)
      html_room(pointer)
      html_image(pointer, file, as_text_arg(dir), align, as_whole_arg(w), as_whole_arg(h))
      invisible(self)
    },
    href = function(url, label, dir = "", picture = "") {
      for (name in c("url", "label", "dir", "picture")) as_text_arg(get(name), name)
      html_room(pointer)
      html_href(pointer, url, dir, label, picture)
      invisible(self)
    },
    js = function(name, dir = "", w, h) {
      as_text_arg(name)
      as_text_arg(dir)
      html_room(pointer)
      html_js(pointer, name, dir, as_whole_arg(w), as_whole_arg(h))
      invisible(self)
    },
    endline = function(n = 1) {
      html_room(pointer)
      html_endline(pointer, as_whole_arg(n, from = 0, to = 1e5))
      invisible(self)
    },
    clear = function() {
      html_clear(pointer)
      invisible(self)
    },
    page = function() html_page(pointer),
    save = function(dir, file) save_page(pointer, as_text_arg(dir), as_text_arg(file))))
  self
}

# A folder as the library's files name it, with its last separator.
as_folder <- function(x) if (!nzchar(x) || grepl("[/\\]$", x)) x else paste0(x, "/")

# The page has a place for what is to come.
html_room <- function(pointer, part = "") {
  counts <- html_counts(pointer)
  outside <- function(rows, i, j)
    refuse("TABLE", "Text & operator ()(int,int)", "indeks poza zakresem",
           sprintf("%d x 10 : ( %d , %d )", rows, i, j))
  if (part == "background") return()
  if (part == "tab") {
    if (counts[1] >= 10) outside(1L, 1L, counts[1] + 1L)
    return()
  }
  if (counts[1] < 1) outside(1L, 1L, 0L)
  if (part == "chapter" && counts[2] >= 10) outside(10L, counts[2] + 1L, counts[1])
}

text_settings <- c(bold = "flag", italic = "flag", underline = "flag", size = "whole",
                   color = "text", face = "text")
table_settings <- c(caption = "text", caption_align = "text", width = "text", height = "text",
                    align = "text", bgcolor = "text", header_bgcolor = "text",
                    show_colnames = "flag", show_rownames = "flag", border = "whole",
                    cellpadding = "whole", cellspacing = "whole")

as_settings <- function(given, kinds) {
  if (length(given) && (is.null(names(given)) || !all(names(given) %in% names(kinds))))
    misused("...", paste("be of", paste(names(kinds), collapse = ", ")))
  if (anyDuplicated(names(given))) misused("...", "give each setting once")
  for (name in names(given))
    given[[name]] <- switch(kinds[[name]],
                            flag = as.integer(as_flag_arg(given[[name]], name)),
                            whole = as_whole_arg(given[[name]], name),
                            text = as_text_arg(given[[name]], name))
  given
}

put_table <- function(pointer, x, format, settings) {
  numbers <- (is.numeric(x) || is.logical(x)) && !is.object(x) ||
    is.data.frame(x) && ncol(x) > 0 && all(vapply(x, function(v) is.numeric(v) && !is.object(v), NA))
  if (numbers && !is.null(format)) {
    x <- as_matrix_arg(x)
    as_formats(format, ncol(x), "void add_matrix(matrix,matrix,table_properties)", "macierzy")
    if (is.null(settings$show_rownames)) settings$show_rownames <- as.integer(!is.null(rownames(x)))
    return(html_matrix(pointer, x, as.double(format), settings))
  }
  rows <- if (is.data.frame(x)) {
    if (!is.integer(attr(x, "row.names"))) row.names(x)
  } else if (is.null(dim(x))) {
    names(x)
  } else {
    rownames(x)
  }
  columns <- as_table_arg(x)
  if (!is.null(format)) {
    as_formats(format, length(columns), "void add_table(table,matrix,table_properties)", "tabeli")
    # the library knows no exponents there
    columns[] <- lapply(columns, function(v) {
      powers <- grepl("^-?[0-9.]+e[-+][0-9]+$", v)
      v[powers] <- vapply(as.double(v[powers]), base::format, "", scientific = FALSE)
      v
    })
  }
  if (is.null(settings$show_rownames)) settings$show_rownames <- as.integer(!is.null(rows))
  html_table(pointer, columns, if (is.null(rows)) character() else enc2native(rows),
             if (!is.null(format)) as.double(format), settings)
}

as_formats <- function(format, cols, routine, object) {
  if (!is.numeric(format)) misused("format", "be numeric")
  if (length(dim(format)) == 2 && all(dim(format) > 1))
    refuse("HTML", routine, "zmienna definiujaca format kolumn nie jest wektorem")
  if (length(format) != cols)
    refuse("HTML", routine,
           paste("wektor definiujacy format kolumn ma dlugosc niezgodna z liczba kolumn", object))
}

save_page <- function(pointer, dir, file) {
  folder <- as_folder(path.expand(dir))
  where <- paste0("katalog: ", as_folder(dir), ", plik: ", file)
  if (!reports_write(paste0(folder, file), page_bytes(html_page(pointer))))
    refuse("HTML", "void save(Text,Text)", "nieudane otwarcie pliku do zapisu", where)
  if (!reports_write(paste0(folder, "varnow.css"), charToRaw(html_style(pointer))))
    refuse("HTML", "html(Text,Text,Text)", "nieudany zapis stylow css", where)
  invisible(paste0(folder, file))
}

# The bytes of a text in the page's encoding; other characters by their number.
page_bytes <- function(x) {
  if (!validEnc(x) || !grepl("[^ -~\t\r\n]", x)) return(charToRaw(x))
  whole <- iconv(x, "", "ISO-8859-2", toRaw = TRUE)[[1]]
  if (!is.null(whole)) return(whole)
  characters <- strsplit(enc2utf8(x), "", fixed = TRUE)[[1]]
  foreign <- is.na(iconv(characters, "UTF-8", "ISO-8859-2"))
  characters[foreign] <- paste0("&#", vapply(characters[foreign], utf8ToInt, 0L), ";")
  iconv(paste(characters, collapse = ""), "UTF-8", "ISO-8859-2", toRaw = TRUE)[[1]]
}

#' Plots by gnuplot
#'
#' A gnuplot script under way: each method adds a statement to `name.plt` in a folder, in the order of
#' the calls, and `$close()` ends it. Data are written to files beside it. Drawing is up to the user:
#' `gnuplot name.plt` in that folder. After `$close()` methods do nothing. Every method gives the
#' object back, invisibly.
#'
#' @section Methods:
#' * `$plot(x, using = "", title = "", with = "", ...)` and `$splot()`, for three dimensions, plot up
#'   to five series. A series is a numeric matrix, data frame or vector; or a text: the name of a file
#'   (it holds `.txt` or `.dat`), `"~"` for the file before, or an expression. Further series are
#'   lists of the same four, by position or name. Data go to `name_title.dat`, or without a title
#'   `name_counter-k.dat`. Empty clauses are left out; the title `"notitle"` stands for none.
#' * With a text: `$title`, `$style`, `$xlabel`, `$ylabel`, `$zlabel`, `$key`, `$object`, `$xtics`,
#'   `$ytics`, `$ztics`, `$set`, `$comment`; `$inst` and `$define` for any statement, `$instc` for one
#'   that goes on in the same line.
#' * With numbers: `$xrange(a, b)`, `$yrange`, `$zrange`, `$view`; `$boxwidth(x)`, `$bmargin`;
#'   `$samples(n)`, `$isosamples`; `$endl(n)` for empty lines.
#' * `$parametric(on)`, `$multiplot(on, rows = 1, cols = 1)`, `$reset()`, `$label(n, x, a, b)`,
#'   `$pause(n, x)`, `$sep(ch, n)` for a comment line of n times `ch`, `$speccom(x, ch, n)` for a
#'   comment between two of them.
#'
#' Numbers stand with six decimals, but for the whole ones of `$samples()` and the like.
#'
#' @param name the stem of the files
#' @param directory an existing folder
#' @return a reference object
#' @examples
#' g <- gplot("cars", tempdir())
#' g$title("Stopping")$xlabel("mph")$ylabel("ft")
#' g$plot(cars, "1:2", "measured", "points", list("x ** 1.6", title = "rule", with = "lines"))
#' g$close()
#' readLines(file.path(tempdir(), "cars.plt"))
#' @export
gplot <- function(name, directory = ".") {
  as_text_arg(name)
  as_text_arg(directory)
  folder <- as_folder(path.expand(directory))
  pointer <- gplot_new(name, folder)
  if (is.null(pointer))
    stop("the script could not be opened: ", folder, name, ".plt", call. = FALSE)
  done <- function(call) {
    call
    invisible(self)
  }
  with_text <- function(member) {
    force(member)
    function(x) done(gplot_text(pointer, member, as_text_arg(x)))
  }
  with_number <- function(member) {
    force(member)
    function(x) done(gplot_number(pointer, member, as_number_arg(x)))
  }
  with_pair <- function(member) {
    force(member)
    function(a, b) {
      as_number_arg(a)
      done(gplot_pair(pointer, member, a, as_number_arg(b)))
    }
  }
  with_whole <- function(member, from, to) {
    force(member)
    function(n) done(gplot_whole(pointer, member, as_whole_arg(n, from = from, to = to)))
  }
  self <- new_object("gplot", pointer, c(
    sapply(c("title", "style", "xlabel", "ylabel", "zlabel", "key", "object", "xtics", "ytics",
             "ztics", "set", "define", "inst", "instc", "comment"), with_text, simplify = FALSE),
    sapply(c("boxwidth", "bmargin"), with_number, simplify = FALSE),
    sapply(c("xrange", "yrange", "zrange", "view"), with_pair, simplify = FALSE),
    sapply(c("samples", "isosamples"), with_whole, -.Machine$integer.max, .Machine$integer.max,
           simplify = FALSE),
    list(
      endl = with_whole("endl", 0, 1e5),
      parametric = function(on) done(gplot_whole(pointer, "parametric", as.integer(as_flag_arg(on)))),
      label = function(n, x, a, b) {
        as_text_arg(x)
        as_number_arg(a)
        done(gplot_label(pointer, as_whole_arg(n), x, a, as_number_arg(b)))
      },
      reset = function() done(gplot_reset(pointer)),
      multiplot = function(on, rows = 1, cols = 1) {
        as_flag_arg(on)
        done(gplot_multiplot(pointer, on, as_whole_arg(rows), as_whole_arg(cols)))
      },
      sep = function(ch, n) {
        as_sign_arg(ch)
        done(gplot_sep(pointer, ch, as_whole_arg(n, from = 0, to = 1e5), NULL))
      },
      speccom = function(x, ch, n) {
        as_text_arg(x)
        as_sign_arg(ch)
        done(gplot_sep(pointer, ch, as_whole_arg(n, from = 0, to = 1e5), x))
      },
      pause = function(n, x = "") {
        as_text_arg(x)
        done(gplot_pause(pointer, as_whole_arg(n), x))
      },
      plot = function(x, using = "", title = "", with = "", ...)
        done(plot_series(pointer, 2L, list(list(x, using, title, with), ...))),
      splot = function(x, using = "", title = "", with = "", ...)
        done(plot_series(pointer, 3L, list(list(x, using, title, with), ...))),
      close = function() done(gplot_close(pointer)))))
  self
}

as_sign_arg <- function(ch) {
  if (nchar(as_text_arg(ch, "ch"), "bytes") != 1) misused("ch", "be one character")
}

plot_series <- function(pointer, dim, series) {
  if (length(series) > 5) misused("...", "be at most four further series")
  series <- lapply(series, function(s) {
    if (!is.list(s) || is.data.frame(s)) misused("...", "be lists of x, using, title, with")
    tryCatch(do.call(function(x, using = "", title = "", with = "") {
      if (is.character(x) && is.null(base::dim(x))) {
        as_text_arg(x)
        if (!nzchar(x)) misused("x", "not be empty")
      } else {
        x <- if (is.data.frame(x) && !all(vapply(x, is.numeric, NA)) || is.character(x))
          as_table_arg(x) else as_matrix_arg(x)
        if (!length(x) || !length(x[[1]])) misused("x", "have rows and columns")
      }
      list(x, c(as_text_arg(using), as_text_arg(title), as_text_arg(with)))
    }, s, quote = TRUE), error = function(e) stop(conditionMessage(e), call. = FALSE))
  })
  failed <- gplot_plot(pointer, dim, lapply(series, `[[`, 1),
                       unlist(lapply(series, `[[`, 2), use.names = FALSE))
  if (nzchar(failed)) stop("the file could not be written: ", failed, call. = FALSE)
}
