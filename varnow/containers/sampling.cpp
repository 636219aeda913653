#include <varnow/containers/matrix_special.h>
#include <varnow/containers/sort_engine.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

namespace varnow {

namespace {

// A place from 0 to n - 1.
int random_place(int n)
{
    return static_cast<int>(detail::random_step() % static_cast<unsigned>(n));
}

// Places of all rows in the order of random keys; takes one step for each.
std::vector<int> random_order(int rows)
{
    std::vector<double> key(static_cast<std::size_t>(rows));
    for (double& k : key) k = detail::random_step();
    std::vector<int> place(key.size());
    detail::sorted_positions(key.data(), rows, Ascending, place.data());
    return place;
}

// 1 to n after n exchanges of entry i with a random one.
Vector shuffled(int n)
{
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    Vector order(n);
    for (int i = 0; i < n; ++i) order.v[i] = i + 1;
    for (int i = 0; i < n; ++i) std::swap(order.v[i], order.v[random_place(n)]);
    return order;
}

} // namespace

template <class T> data<T> data<T>::sample_n(int n, int replace) const
{
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ sample_n(int,int)", why, "");
        return data();
    };
    if (n < 1) return refuse("wybrano mniej niz 1 przypadek");
    if (n > rows && !replace)
        return refuse("wybrano probke bez powtorzen i wiecej przypadkow niz jest w danych");
    if (rows < 1) return refuse("brak przypadkow w danych");
    std::vector<int> const place = replace ? std::vector<int>() : random_order(rows);
    data r(n, cols);
    for (int j = 0; j < cols; ++j) r.cnames[j] = cnames[j];
    for (int k = 0; k < n; ++k) {
        int const i = replace ? random_place(rows) : place[static_cast<std::size_t>(k)];
        r.rnames[k] = rnames[i];
        for (int j = 0; j < cols; ++j) r.cell[k][j] = cell[i][j];
    }
    return r;
}

template <class T> data<T> data<T>::sample_frac(double f, int replace) const
{
    double const n = f * rows;
    // A fraction without a count, NaN among them, is left to sample_n to refuse.
    return sample_n(!(n >= 1) ? 0 : n >= INT_MAX ? INT_MAX : static_cast<int>(n), replace);
}

template <class T> void data<T>::random_shuffle_rows()
{
    reorder_rows(shuffled(rows), 1, rows);
}

template <class T> void data<T>::random_shuffle_cols()
{
    reorder_cols(shuffled(cols), 1, cols);
}

template class data<double>;
template class data<Text>;

} // namespace varnow
