# R's time on the numbers the factory's benchmarks pool, beside the factory's own time.
# usage: Rscript r_reference.R FOLDER   (FOLDER holds what the benchmarks exported; see
# r_reference.sh). Exits 3 when boot or mice is not installed.
ok <- suppressPackageStartupMessages(requireNamespace("boot", quietly = TRUE) &&
                                     requireNamespace("mice", quietly = TRUE))
if (!ok) { cat("r_reference: R packages boot and mice are needed; skipped\n"); quit(status = 3) }
folder <- commandArgs(trailingOnly = TRUE)[1]

figures <- function(file) {
  f <- read.table(file.path(folder, file), col.names = c("name", "value"))
  setNames(f$value, f$name)
}

# A boot object for replicates computed elsewhere, as the oracle test builds it.
as_boot <- function(t0, t) {
  structure(list(t0 = t0, t = matrix(t), R = length(t), sim = "ordinary", stype = "i",
                 call = quote(boot(data = x, statistic = f, R = 1))), class = "boot")
}

# The best of three timings of expr, in seconds of CPU time: the factory's benchmarks take
# their thread's CPU time too, so that other load on the machine stretches neither side.
best_of <- function(expr) {
  expr <- substitute(expr)
  env <- parent.frame()
  min(replicate(3, {
    used <- system.time(eval(expr, env))
    used[["user.self"]] + used[["sys.self"]]
  }))
}

report <- function(what, r_ns, factory_ns) {
  cat(sprintf("%-55s R %10.0f ns  factory %9.0f ns  R/factory %6.1f\n", what, r_ns,
              factory_ns, r_ns / factory_ns))
}

# Bootstrap: per statistic what the factory computes for a percentile interval: bias, standard
# error and boot.ci's percentile bounds (boot.ci declines constant replicates, as the oracle
# notes: those statistics get their value as bounds).
boot_rows <- lapply(strsplit(readLines(file.path(folder, "boot.txt")), " "), as.numeric)
factory_boot <- figures("factory_boot.txt")
percentile <- function(row) {
  t0 <- row[1]; t <- row[-1]
  bounds <- if (length(unique(t)) > 1) {
    boot::boot.ci(as_boot(t0, t), conf = 0.95, type = "perc")$percent[4:5]
  } else rep(t[1], 2)
  c(mean(t) - t0, sd(t), bounds)
}
ci_only <- function(row) boot::boot.ci(as_boot(row[1], row[-1]), conf = 0.95, type = "perc")
varying <- Filter(function(row) length(unique(row[-1])) > 1, boot_rows)
seconds_all <- best_of(for (row in boot_rows) percentile(row))
seconds_ci <- best_of(for (row in varying) ci_only(row))
per_stat <- seconds_all / length(boot_rows) * 1e9
per_ci <- seconds_ci / length(varying) * 1e9
cat(sprintf("bootstrap: %d statistics x %d replicates, percentile interval\n", length(boot_rows),
            length(boot_rows[[1]]) - 1))
report("boot.ci(type = \"perc\") alone, per statistic", per_ci, factory_boot[["ns_per_statistic"]])
report("bias, std. error and boot.ci bounds, per statistic", per_stat,
       factory_boot[["ns_per_statistic"]])
cat(sprintf("  per replicate: R boot.ci %.0f ns, factory %.1f ns (whole pooling)\n",
            per_ci / factory_boot[["replicates"]],
            factory_boot[["ns_per_statistic"]] / factory_boot[["replicates"]]))

# Multiple imputation: mice::pool.scalar on each group's means and squared standard errors.
mi <- as.matrix(read.table(file.path(folder, "mi.txt")))
factory_mi <- figures("factory_mi.txt")
m <- factory_mi[["imputations"]]
seconds_mi <- best_of(for (g in seq_len(nrow(mi))) mice::pool.scalar(mi[g, 1:m], mi[g, (m + 1):(2 * m)]))
cat(sprintf("multiple imputation: %d groups x %d imputations\n", nrow(mi), m))
report("mice::pool.scalar, per group", seconds_mi / nrow(mi) * 1e9, factory_mi[["ns_per_group"]])
