#!/usr/bin/env Rscript
# make_fdr_reference.R FILE: 1000 scores, 900 of them from the null, and what fdrtool makes of their
# upper-tail p-values: the local false discovery rate and the q-value of each.
suppressMessages(library(fdrtool))
set.seed(7)
z <- round(c(rnorm(900), rnorm(100, 3.5)), 4)
fit <- fdrtool(pnorm(z, lower.tail = FALSE), statistic = "pvalue", plot = FALSE, verbose = FALSE)
cat("estimated share of the null:", fit$param[1, "eta0"], "\n")
write.csv(data.frame(z = z, lfdr = signif(fit$lfdr, 7), q = signif(fit$qval, 7)),
          commandArgs(trailingOnly = TRUE)[1], row.names = FALSE, quote = FALSE)
