#include <varnow/containers/matrix.h>

#include <algorithm>

namespace varnow {

namespace {

constexpr int longest_element = 255;

struct literal_shape
{
    int rows;
    int cols;
    bool sound;
};

bool separates(char c)
{
    return c == ' ' || c == ';' || c == 0;
}

// Counts rows and the elements of each; the last row, which no ";" closes, may be shorter.
literal_shape measure(char const* s, char const* routine)
{
    literal_shape shape = {1, 0, true};
    int elements = 0;
    for (bool inside = false;; ++s) {
        if (!separates(*s) && !inside) ++elements;
        inside = !separates(*s);
        if (*s != ';' && *s != 0) continue;
        bool const last = *s == 0;
        if (shape.rows == 1)
            shape.cols = elements;
        else if (last ? elements > shape.cols : elements != shape.cols) {
            errormessage("MATRIX", routine,
                         "zmienna liczba elementow w wierszu: " + itot(shape.rows), "");
            return {0, 0, false};
        }
        if (last) return shape;
        ++shape.rows;
        elements = 0;
    }
}

void read_literal(matrix& m, char const* s, char const* routine)
{
    // The text may be one of the object's own names.
    Text const source(s);
    literal_shape const shape = measure(source.str, routine);
    if (!shape.sound) return;
    m.resize(shape.rows, shape.cols);
    for (int j = 0; j < m.cols; ++j) m.cnames[j] = Text();
    for (int i = 0; i < m.rows; ++i) m.rnames[i] = Text();
    m.fill(0.0);

    char element[longest_element + 1];
    int i = 0, j = 0, length = 0;
    for (char const* p = source.str;; ++p) {
        if (!separates(*p)) {
            if (length == longest_element)
                return errormessage("MATRIX", routine, "tekst ma zbyt wiele znakow", "");
            element[length++] = commod<double>(*p);
            continue;
        }
        if (length > 0) {
            element[length] = 0;
            m.cell[i][j++] = StoT<double>(element);
            length = 0;
        }
        if (*p == 0) return;
        if (*p == ';') {
            ++i;
            j = 0;
        }
    }
}

// The cell of a 1 by 1 object.
double only_cell(matrix const& m, char const* routine)
{
    if (m.rows == 1 && m.cols == 1) return m.cell[0][0];
    errormessage("MATRIX", routine, "konwersja niemozliwa", "");
    return __NAN<double>();
}

} // namespace

matrix::matrix(double x) : data<double>(1, 1)
{
    cell[0][0] = x;
}

matrix::matrix(char const* s)
{
    read_literal(*this, s, "matrix(char *)");
}

matrix::matrix(Vector const& v) : data<double>(v.n, 1)
{
    for (int i = 0; i < v.n; ++i) cell[i][0] = v.v[i];
}

matrix& matrix::operator=(char const* s)
{
    read_literal(*this, s, "matrix operator =(char *)");
    return *this;
}

matrix::operator double() const
{
    return only_cell(*this, "operator double()");
}

matrix::operator int() const
{
    return detail::truncated(only_cell(*this, "operator int()"));
}

} // namespace varnow
