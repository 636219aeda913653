// Every public header of the library.
#pragma once

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
#include <varnow/core/console.h>
#include <varnow/core/date.h>
#include <varnow/core/messages.h>
#include <varnow/core/scalar.h>
#include <varnow/core/text.h>
#include <varnow/core/textutils.h>
#include <varnow/models/discrimination.h>
#include <varnow/models/logistic.h>
#include <varnow/numerics/solve.h>
#include <varnow/numerics/statistics.h>
#include <varnow/reports/gplot.h>
#include <varnow/reports/html.h>
