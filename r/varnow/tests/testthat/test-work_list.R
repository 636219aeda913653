test_that("a list is the file that the library writes, and changes under its lock", {
  file <- tempfile()
  work <- work_list(file, data.frame(a = c(0.5, 2), b = c("x", NA)))
  expect_identical(readLines(file), c("ROWNAME\tparam1\tparam2\tstate", "\t0,5\tx\twaiting",
                                      "\t2\t\twaiting"))
  expect_identical(work$tasks(), data.frame(param1 = c(0.5, 2), param2 = c("x", NA),
                                            state = "waiting"))
  task <- work$take()
  expect_identical(task$row, 1L)
  expect_identical(task$params$param1, 0.5)
  expect_output(print(work), "2 tasks, 1 waiting, 1 in progress, 0 finished$")
  expect_identical(work$done(1)$find(), 2L)
  work$lock()
  expect_false(file.exists(file))
  expect_error(work_list(file, timeout = 0.1), "held")
  expect_identical(readLines(paste0(file, "_"))[2], "\t0,5\tx\tfinished")
  work$reserve(2)$repair()$save()
  expect_identical(work_list(file)$tasks()$state, c("finished", "waiting"))
  expect_false(work$wait(timeout = 0.1))
  expect_identical(work$work(function(p) p$param1 * 2), list(`2` = 4))
  expect_true(work$wait())
  expect_null(work$take())
  expect_identical(work$startall()$find(), 1L)
  expect_identical(work$finishall()$find(), 0L)
})

test_that("two processes share the tasks, and each task is done once", {
  file <- tempfile()
  results <- tempfile()
  dir.create(results)
  work <- work_list(file, seq_len(30))
  script <- tempfile(fileext = ".R")
  writeLines(c(
    sprintf(".libPaths(%s)", deparse1(.libPaths())),
    "library(varnow)",
    sprintf("done <- work_list(%s)$work(function(p) { Sys.sleep(0.01); p$param1^2 })", deparse(file)),
    sprintf("saveRDS(done, tempfile(tmpdir = %s))", deparse(results))), script)
  work$lock()
  rscript <- file.path(R.home("bin"), "Rscript")
  for (k in 1:2) system2(rscript, shQuote(script), wait = FALSE, stdout = FALSE, stderr = FALSE)
  Sys.sleep(1) # they wait for the lock meanwhile
  expect_length(dir(results), 0)
  work$unlock()
  expect_true(work$wait(timeout = 60))
  end <- Sys.time() + 30
  while (length(dir(results)) < 2 && Sys.time() < end) Sys.sleep(0.1)
  Sys.sleep(0.2)
  done <- do.call(c, lapply(dir(results, full.names = TRUE), readRDS))
  expect_identical(sort(as.integer(names(done))), 1:30)
  expect_true(all(unlist(done) == as.integer(names(done))^2))
})

test_that("a user's interrupt ends the wait for a lock", {
  skip_on_os("windows")
  file <- tempfile()
  work_list(file, 1)$lock()
  script <- tempfile(fileext = ".R")
  told <- tempfile()
  writeLines(c(
    sprintf(".libPaths(%s)", deparse1(.libPaths())),
    sprintf("writeLines(as.character(Sys.getpid()), %s)", deparse(told)),
    sprintf("tryCatch(varnow::work_list(%s), interrupt = function(e) writeLines('interrupted', %s))",
            deparse(file), deparse(told))), script)
  system2(file.path(R.home("bin"), "Rscript"), shQuote(script), wait = FALSE, stdout = FALSE,
          stderr = FALSE)
  end <- Sys.time() + 30
  while (!file.exists(told) && Sys.time() < end) Sys.sleep(0.1)
  Sys.sleep(2)
  tools::pskill(as.integer(readLines(told)), tools::SIGINT)
  while (!identical(readLines(told), "interrupted") && Sys.time() < end) Sys.sleep(0.1)
  expect_identical(readLines(told), "interrupted")
})

test_that("misuse is an error of R", {
  reads <- function(message, file)
    expect_refusal(work_list(file), "TABLE", "int readtxt(char *)", message, paste0("plik: ", file))
  reads("nieudane otwarcie pliku do odczytu", normalizePath(tempfile(), mustWork = FALSE))
  file <- normalizePath(tempfile(), mustWork = FALSE)
  writeLines(c("ROWNAME\tstate", "\ta\tb"), file)
  reads("zmienna liczba elementow w wierszu: 2", file)
  writeLines("ROWNAME", file)
  expect_refusal(work_list(file), "TASKS", "void load()", "brak kolumn", paste0("plik: ", file))
  work <- work_list(file, 1:2, overwrite = TRUE)
  writeLines(c("ROWNAME\tstate", "\ta\tb"), file)
  expect_refusal(work$lock(), "TABLE", "int readtxt(char *)", "zmienna liczba elementow w wierszu: 2",
                 paste0("plik: ", file))
  expect_true(file.exists(file)) # the lock was given back
  work$save()$lock()
  for (row in c(0, 3, -1))
    expect_refusal(work$reserve(row), "TASKS", "void reserve(int)", "indeks poza zakresem",
                   sprintf("2 x 1 : ( %d )", row))
  expect_refusal(work$finish(9), "TASKS", "void finish(int)", "indeks poza zakresem",
                 "2 x 1 : ( 9 )")
  expect_misuse(work$finish, c(not_numbers, list(NA, 1.5, "1", 1:2)))
  expect_error(work$lock(), "given back")
  expect_error(work$unlock()$unlock(), "held")
  expect_error(work$finish(1), "held")
  expect_error(work_list(file, 1:2), "overwrite")
  expect_error(work_list(tempfile(), "a\tb"), "tab")
  expect_error(work_list(tempfile(), missing_ok = TRUE, timeout = 0.1), "held")
  lost <- file.path(normalizePath(tempfile(), mustWork = FALSE), "x")
  expect_refusal(work_list(lost, 1:2), "TABLE", "int writetxt(char *)",
                 "nieudane otwarcie pliku do zapisu", paste0("plik: ", lost))
})

test_that("R survives odd arguments", {
  expect_survival("work_list", tempfile(), cars, TRUE, FALSE, 0.1)
})
