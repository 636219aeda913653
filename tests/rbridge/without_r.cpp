#include <varnow/containers/table.h>
#include <varnow/core/date.h>

#include "tests/support/refusal.h"

// What a result of the bridge looks like to its caller: an object that the callee builds in place.
namespace Rcpp {
struct String
{
    char room[256];
    ~String() {}
};
} // namespace Rcpp

namespace varnow {

Rcpp::String rtext(Text const& x);
Rcpp::String rmatrix(matrix const& x);
Rcpp::String rtable(table const& x);

TEST(BridgeDeathTest, RefusesWhereThereIsNoR)
{
    EXPECT_REFUSAL(rtext("a"), "RBRIDGE", "Rcpp::String rtext(Text)",
                   "program nie jest uruchomiony w srodowisku R");
    EXPECT_REFUSAL(rmatrix(matrix(1, 1)), "RBRIDGE", "Rcpp::Matrix<14> rmatrix(matrix)",
                   "program nie jest uruchomiony w srodowisku R");
    EXPECT_REFUSAL(rtable(table(1, 1)), "RBRIDGE", "Rcpp::DataFrame rtable(table)",
                   "program nie jest uruchomiony w srodowisku R");
}

} // namespace varnow
