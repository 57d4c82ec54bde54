# The reference for ROracleTest: R's mice and boot on the numbers the test fed to a session.
# usage: Rscript r_oracle.R INPUT   (exit 3 when mice or boot is not installed)
# Input, one case a line:
#   mi   NAME DFCOM M  Q_1..Q_m  U_1..U_m        (DFCOM Inf: complete-data df unknown)
#   corr NAME M  r_1..r_m  N_1..N_m               (Fisher z, variance 1/(N-3))
#   boot NAME T0 B  t_1..t_B  N  jack_1..jack_N   (N 0: no jackknife, no BCa)
# Output, one line a case: NAME and the values named in the comments below, %.17g.
ok <- suppressPackageStartupMessages(requireNamespace("mice", quietly = TRUE) &&
                                     requireNamespace("boot", quietly = TRUE))
if (!ok) { cat("R packages mice and boot are needed\n"); quit(status = 3) }

num <- function(x) as.numeric(x)
out <- function(name, values) cat(name, sprintf("%.17g", values), "\n")

# Rubin's rules as mice reports them. mice floors lambda at 1e-4 to keep (m-1)/lambda^2 finite,
# so when every imputation agrees the exact limit, df = dfobs, is computed here instead.
pool_mi <- function(name, dfcom, Q, U) {
  m <- length(Q)
  p <- mice::pool.scalar(Q, U, n = dfcom + 1, k = 1)
  df <- p$df
  if (p$b == 0 && is.finite(dfcom)) df <- (dfcom + 1) / (dfcom + 3) * dfcom
  fmi <- (p$r + 2 / (df + 3)) / (p$r + 1)
  se <- sqrt(p$t)
  q <- qt(0.975, df)
  # estimate, standard error, t, df, two-tailed p, 95% bounds, riv, fmi, relative efficiency,
  # then Exp(B) with its bounds and the Wald statistic t^2
  lower <- p$qbar - q * se; upper <- p$qbar + q * se
  out(name, c(p$qbar, se, p$qbar / se, df, 2 * pt(-abs(p$qbar / se), df), lower, upper,
              p$r, fmi, 1 / (1 + fmi / m), exp(p$qbar), exp(lower), exp(upper), (p$qbar / se)^2))
}

# A boot object for replicates computed elsewhere: boot.ci needs only t0, t and the call.
as_boot <- function(t0, t) {
  structure(list(t0 = t0, t = matrix(t), R = length(t), sim = "ordinary", stype = "i",
                 call = quote(boot(data = x, statistic = f, R = 1))), class = "boot")
}

for (line in readLines(commandArgs(trailingOnly = TRUE)[1])) {
  f <- strsplit(trimws(line), " +")[[1]]
  kind <- f[1]; name <- f[2]
  if (kind == "mi") {
    m <- as.integer(f[4]); v <- num(f[-(1:4)])
    pool_mi(name, num(f[3]), v[1:m], v[(m + 1):(2 * m)])
  } else if (kind == "corr") {
    m <- as.integer(f[3]); v <- num(f[-(1:3)])
    r <- v[1:m]; n <- v[(m + 1):(2 * m)]
    p <- mice::pool.scalar(atanh(r), 1 / (n - 3))
    two <- 2 * pt(-abs(p$qbar / sqrt(p$t)), p$df)
    # pooled r, two-tailed p, one-tailed p
    out(name, c(tanh(p$qbar), two, two / 2))
  } else if (kind == "boot") {
    t0 <- num(f[3]); B <- as.integer(f[4]); t <- num(f[5:(4 + B)])
    n <- as.integer(f[5 + B]); jack <- num(f[-(1:(5 + B))])
    types <- if (n > 0) "bca" else "perc"
    # Empirical influence values of the jackknife, as boot's own empinf(type = "jack") gives.
    L <- if (n > 0) (n - 1) * (mean(jack) - jack) else NULL
    # boot.ci declines when every replicate is the same value; every quantile is then that value.
    bounds <- rep(t[1], 2)
    if (length(unique(t)) > 1) {
      ci <- boot::boot.ci(as_boot(t0, t), conf = 0.95, type = types, L = L)
      bounds <- if (n > 0) ci$bca[4:5] else ci$percent[4:5]
    }
    # bias, standard error, lower, upper
    out(name, c(mean(t) - t0, sd(t), bounds))
  }
}
