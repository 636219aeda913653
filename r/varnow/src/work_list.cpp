#include "carry.h"

// The list of a file that files_look() found sound, as columns and names of rows.
// [[Rcpp::export]]
Rcpp::List work_read(std::string const& file)
{
    varnow::table t;
    if (t.readtxt(file.c_str(), 0, 1, 1, 1, '\t', 0) != 0) Rcpp::stop("`file` could not be read");
    Rcpp::CharacterVector names(t.rows);
    for (int i = 0; i < t.rows; ++i) names[i] = varnow::rtext(t.rnames[i]);
    return Rcpp::List::create(table_result(t), names);
}

// A list of tasks that all wait, as the library begins one.
// [[Rcpp::export]]
Rcpp::List work_new(Rcpp::List const& params, int rows)
{
    varnow::table const given = table_arg(params);
    varnow::tasks t(rows, given.cols, varnow::Text());
    for (int i = 0; i < given.rows; ++i)
        for (int j = 0; j < given.cols; ++j) t.list.cell[i][j] = given.cell[i][j];
    t.startall();
    return table_result(t.list);
}

// Writes the list as the library does.
// [[Rcpp::export]]
bool work_write(Rcpp::List const& columns, Rcpp::CharacterVector const& row_names,
                std::string const& file)
{
    varnow::table t = table_arg(columns);
    for (int i = 0; i < t.rows && i < row_names.size(); ++i)
        t.rnames[i] = CHAR(STRING_ELT(row_names, i));
    return t.writetxt(file.c_str(), 0, 1, 1, 0, '\t', ',', 0) == 0;
}
