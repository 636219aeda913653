// Every public header of the library; those of R only for a program that has included Rcpp.
#pragma once

#include <varnow/accumulators/quantiles.h>
#include <varnow/accumulators/simulation.h>
#include <varnow/analytics/grouping.h>
#include <varnow/analytics/pivot.h>
#include <varnow/containers/compare.h>
#include <varnow/containers/compress.h>
#include <varnow/containers/data.h>
#include <varnow/containers/matrix.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_products.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>
#include <varnow/containers/table.h>
#include <varnow/containers/vector.h>
#include <varnow/coordination/progress.h>
#include <varnow/coordination/tasks.h>
#include <varnow/core/console.h>
#include <varnow/core/date.h>
#include <varnow/core/messages.h>
#include <varnow/core/scalar.h>
#include <varnow/core/text.h>
#include <varnow/core/textutils.h>
#include <varnow/models/discrimination.h>
#include <varnow/models/linear.h>
#include <varnow/models/logistic.h>
#include <varnow/models/param_start.h>
#include <varnow/network/neural_net.h>
#include <varnow/numerics/fitting.h>
#include <varnow/numerics/minimise.h>
#include <varnow/numerics/regression.h>
#include <varnow/numerics/smoothing.h>
#include <varnow/numerics/solve.h>
#include <varnow/numerics/statistics.h>
#include <varnow/numerics/univariate.h>
#include <varnow/reports/gplot.h>
#include <varnow/reports/html.h>
#include <varnow/sparse/sparse.h>

#if defined(Rcpp_hpp) && __has_include(<varnow/rbridge/conversions.h>)
#include <varnow/rbridge/conversions.h>
#endif
