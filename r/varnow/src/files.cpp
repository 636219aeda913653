#include "carry.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace {

struct closer
{
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using file_handle = std::unique_ptr<std::FILE, closer>;

// What counts as a number in a column of a data frame: signs, digits, one point and an exponent, or
// R's words, with blanks around.
bool is_number(char const* p, char dec, bool& whole)
{
    auto ended = [&p] {
        while (*p == ' ') ++p;
        return *p == 0;
    };
    while (*p == ' ') ++p;
    auto digits = [&p] {
        char const* const first = p;
        while (*p >= '0' && *p <= '9') ++p;
        return p - first;
    };
    if (*p == '-' || *p == '+') ++p;
    if (std::strncmp(p, "Inf", 3) == 0 || std::strncmp(p, "NaN", 3) == 0) {
        whole = false;
        p += 3;
        return ended();
    }
    auto n = digits();
    whole = n <= 9;
    if (*p == dec) {
        whole = false;
        ++p;
        n += digits();
    }
    if (n == 0) return false;
    if (*p == 'e' || *p == 'E') {
        whole = false;
        ++p;
        if (*p == '-' || *p == '+') ++p;
        if (digits() == 0) return false;
    }
    return ended();
}

// One column of a table as R's vector: whole numbers, numbers, logical values or texts, whichever
// all its cells are; logical where none is given.
class column_guess
{
public:
    column_guess(varnow::table const& t, int j, Rcpp::CharacterVector const& na, char dec)
        : t_(t), j_(j), na_(na), dec_(dec)
    {
    }

    SEXP vector() const
    {
        bool number = true, whole = true, truth = true;
        for (int i = 0; i < t_.rows && (number || truth); ++i) {
            varnow::Text const& x = t_.cell[i][j_];
            if (missing(x)) continue;
            bool cell_whole = false;
            number = number && is_number(x.str, dec_, cell_whole);
            whole = whole && cell_whole;
            truth = truth && (x == "TRUE" || x == "FALSE");
        }
        if (truth)
            return filled(Rcpp::LogicalVector(t_.rows), NA_LOGICAL,
                          [](varnow::Text const& x) { return int(x == "TRUE"); });
        if (number && whole)
            return filled(Rcpp::IntegerVector(t_.rows), NA_INTEGER,
                          [](varnow::Text const& x) { return varnow::ttoi(x); });
        if (number)
            return filled(Rcpp::NumericVector(t_.rows), NA_REAL,
                          [](varnow::Text const& x) { return varnow::ttod(x); });
        return texts();
    }

    SEXP texts() const
    {
        Rcpp::CharacterVector r(t_.rows);
        for (int i = 0; i < t_.rows; ++i) {
            varnow::Text const& x = t_.cell[i][j_];
            SET_STRING_ELT(r, i, missing(x) ? NA_STRING : Rf_mkCharLenCE(x.str, x.len, CE_NATIVE));
        }
        return r;
    }

private:
    bool missing(varnow::Text const& x) const
    {
        if (x.len == 0) return true;
        for (R_xlen_t k = 0; k < na_.size(); ++k)
            if (std::strcmp(x.str, CHAR(STRING_ELT(na_, k))) == 0) return true;
        return false;
    }

    template <class V, class X, class F> SEXP filled(V r, X na, F value) const
    {
        for (int i = 0; i < t_.rows; ++i) {
            varnow::Text const& x = t_.cell[i][j_];
            r[i] = missing(x) ? na : value(x);
        }
        return r;
    }

    varnow::table const& t_;
    int const j_;
    Rcpp::CharacterVector const& na_;
    char const dec_;
};

// Some programs put a byte order mark before the first name.
template <class X> void drop_mark(X& x)
{
    if (x.cols > 0 && std::strncmp(x.cnames[0].str, "\xEF\xBB\xBF", 3) == 0)
        x.cnames[0] = std::string(x.cnames[0].str + 3).c_str();
}

std::vector<char> readable(std::FILE* f)
{
    std::vector<char> block(1 << 16);
    block.resize(std::fread(block.data(), 1, block.size(), f));
    return block;
}

Rcpp::CharacterVector texts_of(varnow::Text const* x, int n)
{
    Rcpp::CharacterVector r(n);
    for (int k = 0; k < n; ++k) r[k] = varnow::rtext(x[k]);
    return r;
}

// Lines of fields, gathered in blocks.
class line_writer
{
public:
    line_writer(std::string const& file, char sep, bool quotes)
        : file_(std::fopen(file.c_str(), "wb")), sep_(sep), quotes_(quotes), good_(file_ != nullptr)
    {
    }

    void field(char const* text)
    {
        if (begun_) block_ += sep_;
        begun_ = true;
        if (quotes_) block_ += '"';
        block_ += text;
        if (quotes_) block_ += '"';
    }
    void end()
    {
        block_ += '\n';
        begun_ = false;
        if (block_.size() > 1 << 16) flush();
    }
    // True when all of it is in the file.
    bool close()
    {
        flush();
        return good_ && std::fclose(file_.release()) == 0;
    }

private:
    void flush()
    {
        good_ = good_ && std::fwrite(block_.data(), 1, block_.size(), file_.get()) == block_.size();
        block_.clear();
    }

    file_handle file_;
    std::string block_;
    char const sep_;
    bool const quotes_;
    bool begun_ = false;
    bool good_;
};

// As few digits as bring the number back.
void print(double x, char dec, char (&to)[32])
{
    to[0] = 0;
    if (ISNAN(x)) return;
    if (!R_FINITE(x)) {
        std::strcpy(to, x < 0 ? "-Inf" : "Inf");
        return;
    }
#if defined(__cpp_lib_to_chars)
    *std::to_chars(to, to + sizeof to - 1, x).ptr = 0;
#else
    int digits = 15;
    do {
        std::snprintf(to, sizeof to, "%.*g", digits, x);
    } while (++digits <= 17 && std::strtod(to, nullptr) != x);
#endif
    if (dec != '.') std::replace(to, to + std::strlen(to), '.', dec);
}

} // namespace

// What readtxt would refuse, in its words, or the empty text; whether the last line lacks its end;
// and whether a byte 0xFF ends the reading, as there.
// [[Rcpp::export]]
Rcpp::List files_look(std::string const& file, std::string const& sep, bool quotes, bool header)
{
    file_handle const f(std::fopen(file.c_str(), "rb"));
    if (!f) return Rcpp::List::create("nieudane otwarcie pliku do odczytu", false, false);
    char const separator = sep[0];
    long line = 1, separators = 0, expected = -1, length = 0, too_long = 0;
    bool open = false, ended = false;
    for (std::vector<char> block = readable(f.get()); !block.empty() && !ended;
         block = readable(f.get()))
        for (char const c : block) {
            ended = c == '\xFF';
            if (ended) break;
            open = c != '\n';
            if (c == separator || c == '\n') {
                length = 0;
                separators += c == separator;
            } else if (c != '\r' && !(quotes && c == '"') && ++length == 256 && !too_long)
                too_long = line;
            if (c != '\n') continue;
            if (expected < 0) expected = separators;
            if (separators != expected)
                return Rcpp::List::create(
                    "zmienna liczba elementow w wierszu: " + std::to_string(line), false, false);
            separators = 0;
            ++line;
        }
    if (std::ferror(f.get()))
        return Rcpp::List::create("nieudane otwarcie pliku do odczytu", false, false);
    if (open && expected >= 0 && separators != expected)
        return Rcpp::List::create("zmienna liczba elementow w wierszu: " + std::to_string(line),
                                  false, false);
    if (too_long)
        return Rcpp::List::create(header && too_long == 1 ? "nazwa kolumny ma zbyt wiele znakow"
                                                          : "tekst ma zbyt wiele znakow",
                                  false, false);
    return Rcpp::List::create("", open, ended);
}

// [[Rcpp::export]]
bool files_regular(std::string const& file)
{
    std::error_code failure;
    return std::filesystem::is_regular_file(file, failure);
}

// [[Rcpp::export]]
Rcpp::List files_read_frame(std::string const& file, std::string const& sep, bool header,
                            bool row_names, bool quotes, bool show, std::string const& dec,
                            Rcpp::CharacterVector const& na, Rcpp::RObject const& as_text)
{
    varnow::table t;
    if (t.readtxt(file.c_str(), show, row_names, header, quotes, sep[0], 0) != 0)
        Rcpp::stop("`file` could not be read");
    drop_mark(t);
    Rcpp::CharacterVector const names = texts_of(t.cnames, t.cols);
    bool const all_text = Rcpp::is<bool>(as_text) && Rcpp::as<bool>(as_text);
    std::vector<std::string> text_columns;
    if (TYPEOF(as_text) == STRSXP) text_columns = Rcpp::as<std::vector<std::string>>(as_text);
    Rcpp::List columns(t.cols);
    for (int j = 0; j < t.cols; ++j) {
        column_guess const column(t, j, na, dec[0]);
        bool const text = all_text || std::count(text_columns.begin(), text_columns.end(),
                                                 std::string(t.cnames[j].str)) > 0;
        columns[j] = text ? column.texts() : column.vector();
    }
    columns.attr("names") = names;
    return Rcpp::List::create(columns, texts_of(t.rnames, t.rows));
}

// [[Rcpp::export]]
Rcpp::NumericMatrix files_read_matrix(std::string const& file, std::string const& sep, bool header,
                                      bool row_names, bool quotes, bool show)
{
    varnow::matrix m;
    if (m.readtxt(file.c_str(), show, row_names, header, quotes, sep[0], 0) != 0)
        Rcpp::stop("`file` could not be read");
    drop_mark(m);
    Rcpp::NumericMatrix r = matrix_result(m);
    for (double& number : r)
        if (std::isnan(number)) number = NA_REAL;
    return r;
}

// [[Rcpp::export]]
bool files_write_matrix(Rcpp::NumericMatrix const& x, std::string const& file,
                        std::string const& sep, bool header, bool row_names, bool quotes, bool show,
                        std::string const& dec)
{
    return matrix_arg(x).writetxt(file.c_str(), show, row_names, header, quotes, sep[0], dec[0],
                                  0) == 0;
}

// The lines that writetxt gives for a table, but straight from R's columns of doubles and texts,
// and with commas in texts left as they are.
// [[Rcpp::export]]
bool files_write_frame(Rcpp::List const& columns, Rcpp::CharacterVector const& names, int rows,
                       Rcpp::CharacterVector const& row_names, std::string const& file,
                       std::string const& sep, bool header, bool quotes, std::string const& dec)
{
    line_writer out(file, sep[0], quotes);
    bool const named = row_names.size() > 0;
    int const cols = static_cast<int>(columns.size());
    if (header) {
        if (named) out.field("ROWNAME");
        for (int j = 0; j < cols; ++j) out.field(CHAR(STRING_ELT(names, j)));
        out.end();
    }
    char number[32];
    for (int i = 0; i < rows; ++i) {
        if (named) out.field(CHAR(STRING_ELT(row_names, i)));
        for (int j = 0; j < cols; ++j) {
            SEXP const column = VECTOR_ELT(columns, j);
            if (TYPEOF(column) == REALSXP) {
                print(REAL(column)[i], dec[0], number);
                out.field(number);
            } else {
                SEXP const text = STRING_ELT(column, i);
                out.field(text == NA_STRING ? "" : CHAR(text));
            }
        }
        out.end();
    }
    return out.close();
}

// [[Rcpp::export]]
bool files_gzip(std::string const& from, std::string const& to)
{
    return varnow::gzip(from.c_str(), to.c_str()) == 0;
}

// [[Rcpp::export]]
bool files_gunzip(std::string const& from, std::string const& to)
{
    return varnow::gunzip(from.c_str(), to.c_str()) == 0;
}
