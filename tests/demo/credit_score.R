# Fits and rates the demo's samples anew: glm for the coefficients, ranks for the accuracy ratio
# (AR = 2 AUC - 1), all thresholds for the Kolmogorov-Smirnov distance.
arguments <- commandArgs(TRUE)
out <- arguments[1]
read <- function(name, ...) as.matrix(read.delim(file.path(out, name), check.names = FALSE, ...))
learning <- read("learning.txt")
validation <- read("validation.txt")
parameters <- read("parameters.txt", header = TRUE)
rating <- read("rating.txt", row.names = 1)

same <- function(what, got, expected, tolerance) {
  worst <- max(abs(got - expected))
  cat(sprintf("%-34s worst difference %.2e of at most %.0e\n", what, worst, tolerance))
  if (!is.finite(worst) || worst > tolerance) quit(status = 1)
}

variables <- ncol(learning) - 1
X <- learning[, 1:variables]
y <- learning[, variables + 1]
fit <- glm(y ~ X, family = binomial, control = glm.control(epsilon = 1e-13))
# Files keep six decimals of the data.
same("Newton against glm", parameters[, 1], coef(fit)[c(1 + 1:variables, 1)], 2e-5)

# The ridged optimum, by Newton steps of our own.
A <- cbind(X, 1)
b <- rep(0, variables + 1)
for (turn in 1:50) {
  p <- plogis(drop(A %*% b))
  b <- b + solve(crossprod(A * (p * (1 - p)), A) + 0.1 * diag(length(b)), drop(crossprod(A, y - p)) - 0.1 * b)
}
same("Conjugate search against the optimum", parameters[, 2], b, 1e-3)

accuracy <- function(score, y) {
  bad <- sum(y)
  good <- sum(1 - y)
  # Of all pairs, those in which the bad one has the lower score; ties count half.
  auc <- (sum(rank(-score)[y == 1]) - bad * (bad + 1) / 2) / (bad * good)
  2 * auc - 1
}
distance <- function(score, y) {
  at <- sort(unique(score))
  max(ecdf(score[y == 1])(at) - ecdf(score[y == 0])(at))
}
p <- plogis(drop(A %*% parameters[, 2]))
same("AR of the learning sample", rating["learning", "AR"], accuracy(round(1000 * (1 - p)), y), 1e-4)
yv <- validation[, variables + 1]
score <- validation[, variables + 2]
same("AR of the validation sample", rating["validation", "AR"], accuracy(score, yv), 1e-6)
# The library walks through ties one by one, so it can be above the distance at the thresholds by a step.
same("KS of the validation sample", rating["validation", "KS"], distance(score, yv), 2 / sum(yv))
same("Sizes", c(rating[, "Applications"], rating[, "Bad"]), c(length(y), length(yv), sum(y), sum(yv)), 0)

# The network from its files.
weights <- function(part) {
  d <- scan(file.path(out, sprintf("network_%s.nn", part)), quiet = TRUE)
  w <- matrix(0, d[1], d[2])
  e <- matrix(d[-(1:3)], ncol = 3, byrow = TRUE)
  w[e[, 1:2]] <- e[, 3]
  w
}
network <- read("network.txt", row.names = 1)
hidden <- tanh(sweep(validation[, 1:variables] %*% weights("w1"), 2, weights("b1"), "+"))
p <- plogis(drop(hidden %*% weights("w2")) + drop(weights("b2")))
same("AR of the network", network["network", "AR validation"], accuracy(round(1000 * (1 - p)), yv), 1e-3)
if (network["network", "AR validation"] < network["logistic regression", "AR validation"] - 0.02)
  stop("the network has not learned")

# The response curve against the best of several least-squares searches of R's own.
credit <- read.table(arguments[2], sep = ";", header = TRUE)
x <- credit$Seniority
bad <- as.integer(credit$Status == "bad")
rmse <- function(p) sqrt(mean((bad - (p[1] * tanh(p[2] * x + p[3]) + p[4]))^2))
starts <- list(c(-0.2, 0.1, 0, 0.3), c(-0.5, 0.05, 0.5, 0.6), c(0.3, -0.2, 0, 0.2))
best <- min(sapply(starts, function(p) {
  for (turn in 1:20) p <- optim(p, rmse, control = list(maxit = 5000, reltol = 1e-14))$par
  rmse(p)
}))
same("Error of the response curve", rmse(read("response.txt", header = FALSE)[, 1]), best, 1e-6)
