#' A work list for processes that share a directory
#'
#' A list of parameter sets in a text file, from which any number of R processes, also on other
#' machines and beside programs of the library, take their work. A row is a task with a state:
#' `"waiting"`, `"in progress"` or `"finished"`. The lock of the list is the name of its file: who
#' renames it to the same name with `_` at its end holds it until it is renamed back. Nothing breaks
#' the lock of a process that died: rename the file back by hand.
#'
#' Waiting goes on for ever unless a `timeout` in seconds is given, and can be interrupted. A file
#' that is not there, held or not, is an error at once, unless `missing_ok`.
#'
#' @section Methods:
#' * `$take(timeout)` reserves the first task that waits: a list of its `row` and its `params`, a data
#'   frame of one row; or `NULL` when none waits. `$done(row, timeout)` finishes it.
#' * `$work(f)` takes tasks until none waits, calls `f` with the parameters of each, and gives the
#'   results as a list named by the rows. A task in which `f` fails stays in progress.
#' * `$wait(timeout)` returns when every task is finished, `TRUE`, or the time is over, `FALSE`.
#' * `$load()` reads the file, without the lock; `$tasks()` gives the list in memory as a data frame,
#'   numbers as such.
#' * `$lock(timeout)` takes the lock and reads the newest list; `$reserve(row)` and `$finish(row)`
#'   write the new state, under the lock; `$unlock()` gives it back. `$save()` writes the list in
#'   memory and gives the lock back where it was held. `$find()` is the first task that waits, 0
#'   without one.
#' * `$startall()`, `$finishall()`, and `$repair()`, which makes tasks in progress wait again, change
#'   the list in memory: `$lock()`, `$repair()`, `$save()`.
#'
#' @param file the path of the list, the same for all processes
#' @param params a data frame, matrix or vector of parameters, a row for each task, to begin a list;
#'   without it the list in the file is read. A point in a parameter is a comma in the file.
#' @param overwrite whether a list that is there may be replaced
#' @param missing_ok whether to wait for a file that is not there
#' @param timeout how many seconds to wait for the lock of an existing list or for a missing file
#' @return a reference object
#' @examples
#' file <- tempfile()
#' work_list(file, data.frame(mean = c(0, 1, 2), n = 100))
#'
#' # in each worker
#' work <- work_list(file)
#' unlist(work$work(function(params) mean(rnorm(params$param2, params$param1))))
#' work$load()$tasks()
#' @export
work_list <- function(file, params = NULL, overwrite = FALSE, missing_ok = FALSE, timeout = Inf) {
  path <- path.expand(as_text_arg(file))
  if (!nzchar(path)) misused("file", "be the name of a file")
  as_flag_arg(overwrite)
  as_flag_arg(missing_ok)
  as_number_arg(timeout, from = 0)
  path <- file.path(normalizePath(dirname(path), mustWork = FALSE), basename(path))
  state <- new.env(parent = emptyenv())
  state$path <- path
  state$held_path <- paste0(path, "_")
  state$held <- FALSE
  state$missing_ok <- missing_ok
  if (is.null(params)) {
    load_list(state, timeout)
  } else {
    if (!overwrite && (file.exists(path) || file.exists(state$held_path)))
      misused("file", "be new, or `overwrite` TRUE")
    begin_list(state, params)
    save_list(state)
  }
  methods <- list(
    load = function(timeout = Inf) {
      load_list(state, as_number_arg(timeout, from = 0))
      invisible(self)
    },
    save = function() {
      save_list(state)
      invisible(self)
    },
    lock = function(timeout = Inf) {
      lock_list(state, as_number_arg(timeout, from = 0))
      invisible(self)
    },
    unlock = function() {
      unlock_list(state)
      invisible(self)
    },
    find = function() match("waiting", states_of(state), 0L),
    reserve = function(row) {
      change_state(state, row, "in progress", "void reserve(int)")
      invisible(self)
    },
    finish = function(row) {
      change_state(state, row, "finished", "void finish(int)")
      invisible(self)
    },
    take = function(timeout = Inf) take_task(state, as_number_arg(timeout, from = 0)),
    done = function(row, timeout = Inf) {
      lock_list(state, as_number_arg(timeout, from = 0))
      on.exit(unlock_list(state))
      change_state(state, row, "finished", "void finish(int)")
      invisible(self)
    },
    work = function(f) {
      f <- match.fun(f)
      results <- list()
      while (!is.null(task <- take_task(state, Inf))) {
        results[as.character(task$row)] <- list(f(task$params))
        self$done(task$row)
      }
      results
    },
    wait = function(timeout = Inf) wait_list(state, as_number_arg(timeout, from = 0)),
    startall = function() {
      set_states(state, rep("waiting", length(states_of(state))))
      invisible(self)
    },
    finishall = function() {
      set_states(state, rep("finished", length(states_of(state))))
      invisible(self)
    },
    repair = function() {
      now <- states_of(state)
      set_states(state, replace(now, now %in% "in progress", "waiting"))
      invisible(self)
    },
    tasks = function() list_frame(state))
  self <- new_object("work_list", NULL, c(methods, list(state = state)))
  self
}

#' @export
format.work_list <- function(x, ...) {
  state <- as_pointer_arg(x, "work_list")
  state <- get("state", x)
  now <- states_of(state)
  paste0("work list ", state$path, ": ", length(now), " tasks, ", sum(now %in% "waiting"),
         " waiting, ", sum(now %in% "in progress"), " in progress, ", sum(now %in% "finished"),
         " finished", if (state$held) "; locked by this process")
}

states_of <- function(state) state$columns[[length(state$columns)]]
set_states <- function(state, now) state$columns[[length(state$columns)]] <- now

list_frame <- function(state, rows = seq_along(states_of(state))) {
  last <- length(state$columns)
  columns <- lapply(state$columns, `[`, rows)
  columns[-last] <- lapply(columns[-last], utils::type.convert, as.is = TRUE, dec = ",")
  as_frame(columns, rows = length(rows))
}

begin_list <- function(state, params) {
  columns <- as_table_arg(params)
  columns <- lapply(columns, function(v) {
    v[is.na(v)] <- ""
    if (any(grepl("[\t\n\r\"]", v)) || any(nchar(v, "bytes") > 255))
      misused("params", "hold no tab, line end or double quote, and at most 255 bytes in each")
    chartr(".", ",", v) # as the file shows it
  })
  state$columns <- work_new(columns, if (length(columns)) length(columns[[1]]) else NROW(params))
  state$row_names <- character()
}

# Tries again until it gives TRUE, FALSE when the time is over. The user may interrupt.
try_until <- function(timeout, f) {
  end <- Sys.time() + min(timeout, 1e9)
  pause <- 0.02
  while (!f()) {
    left <- as.numeric(end - Sys.time(), units = "secs")
    if (left <= 0) return(FALSE)
    Sys.sleep(min(pause, left))
    pause <- min(2 * pause, 1)
  }
  TRUE
}

unreadable_list <- function(state, why = "nieudane otwarcie pliku do odczytu") {
  refuse("TABLE", "int readtxt(char *)", why, paste0("plik: ", state$path))
}

# Neither name is there, and not for the moment of a rename only.
is_missing <- function(state) {
  for (look in 1:5) {
    if (file.exists(state$path) || file.exists(state$held_path)) return(FALSE)
    Sys.sleep(0.02)
  }
  TRUE
}

# Reads a file into the list; FALSE when it is not there. The copy cannot change under the reader.
read_list <- function(state, path, routine) {
  copy <- tempfile("varnow")
  on.exit(unlink(copy))
  if (dir.exists(path) || !suppressWarnings(file.copy(path, copy, copy.mode = FALSE))) return(FALSE)
  look <- files_look(copy, "\t", TRUE, TRUE)
  if (nzchar(look[[1]])) unreadable_list(state, look[[1]])
  read <- work_read(copy)
  if (!length(read[[1]])) refuse("TASKS", routine, "brak kolumn", paste0("plik: ", state$path))
  state$columns <- read[[1]]
  state$row_names <- read[[2]]
  TRUE
}

load_list <- function(state, timeout) {
  if (!state$missing_ok && (is_missing(state) || dir.exists(state$path))) unreadable_list(state)
  if (!try_until(timeout, function() {
    if (file.exists(state$path) && file.access(state$path, 4) != 0) unreadable_list(state)
    read_list(state, state$path, "void load()")
  }))
    stop("the list is still held: ", state$path, call. = FALSE)
}

move_file <- function(from, to) file.exists(from) && suppressWarnings(file.rename(from, to))

lock_list <- function(state, timeout) {
  if (state$held) misused("lock", "be given back first")
  if (!state$missing_ok && (is_missing(state) || dir.exists(state$path))) unreadable_list(state)
  taken <- FALSE
  # Between the rename and its mark nothing may interrupt.
  if (!try_until(timeout, function() suspendInterrupts({
    state$held <- move_file(state$path, state$held_path)
    state$held
  })))
    stop("the list is still held: ", state$path, call. = FALSE)
  on.exit(if (!taken) unlock_list(state))
  taken <- read_list(state, state$held_path, "void lock()")
  if (!taken) unreadable_list(state)
}

unlock_list <- function(state) {
  if (!state$held) misused("lock", "be held")
  suspendInterrupts({
    if (!move_file(state$held_path, state$path))
      stop("the lock is gone: ", state$held_path, call. = FALSE)
    state$held <- FALSE
  })
}

# The new content in the place of the older one, which stays until it is whole.
put_list <- function(state, path) {
  draft <- tempfile(paste0(basename(path), "-"), dirname(path))
  on.exit(unlink(draft))
  written <- dir.exists(dirname(draft)) && !dir.exists(path) &&
    work_write(state$columns, state$row_names, draft)
  if (written && file.exists(path)) Sys.chmod(draft, file.mode(path), use_umask = FALSE)
  if (!written || !suppressWarnings(file.rename(draft, path)))
    refuse("TABLE", "int writetxt(char *)", "nieudane otwarcie pliku do zapisu",
           paste0("plik: ", path))
}

save_list <- function(state) {
  if (!state$held) return(put_list(state, state$path))
  put_list(state, state$held_path)
  unlock_list(state)
}

change_state <- function(state, row, to, routine) {
  as_whole_arg(row)
  n <- length(states_of(state))
  if (row < 1 || row > n)
    refuse("TASKS", routine, "indeks poza zakresem",
           sprintf("%d x %d : ( %d )", n, length(state$columns) - 1L, as.integer(row)))
  if (!state$held) misused("lock", "be held")
  set_states(state, replace(states_of(state), row, to))
  put_list(state, state$held_path)
}

take_task <- function(state, timeout) {
  lock_list(state, timeout)
  on.exit(unlock_list(state))
  row <- match("waiting", states_of(state), 0L)
  if (row == 0) return(NULL)
  change_state(state, row, "in progress", "void reserve(int)")
  frame <- list_frame(state)
  list(row = row, params = frame[row, -ncol(frame), drop = FALSE])
}

wait_list <- function(state, timeout) {
  if (!state$missing_ok && is_missing(state)) unreadable_list(state)
  try_until(timeout, function()
    read_list(state, state$path, "void load()") &&
      all(is.na(states_of(state)) | states_of(state) == "finished"))
}
