// A program of another project, built against an installed copy.
#include <varnow/varnow.h>

int main()
{
    using namespace varnow;
    matrix product = mul(matrix("1 2; 3 4"), matrix("5 6; 7 8"));
    return product(1, 1) == 19 && product(1, 2) == 22 ? 0 : 1;
}
