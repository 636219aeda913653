// Library objects that R holds by external pointers, and what the library says while it works.
#pragma once

#include <Rcpp.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>

// The class's mark on its pointers: R code could hand over one of another class.
template <class T> SEXP object_mark();

// Passes the object on to R, which destroys it.
template <class T> SEXP object_pointer(std::unique_ptr<T> x)
{
    return Rcpp::XPtr<T>(x.release(), true, object_mark<T>());
}

// Behind the pointer. One that comes from a saved workspace has nothing behind it.
template <class T> T& object(SEXP pointer)
{
    if (TYPEOF(pointer) != EXTPTRSXP || R_ExternalPtrTag(pointer) != object_mark<T>())
        Rcpp::stop("the object is not one of this kind");
    if (!R_ExternalPtrAddr(pointer)) Rcpp::stop("the object ended with the R session that made it");
    return *static_cast<T*>(R_ExternalPtrAddr(pointer));
}

// Keeps what is written to a stream, std::cerr for the library's warnings, off the terminal.
class listening
{
public:
    explicit listening(std::ostream& stream)
        : stream_(stream), before_(stream.rdbuf(heard_.rdbuf()))
    {
    }
    ~listening() { stream_.rdbuf(before_); }
    listening(listening const&) = delete;
    listening& operator=(listening const&) = delete;

    std::string heard() const { return heard_.str(); }

private:
    std::ostringstream heard_;
    std::ostream& stream_;
    std::streambuf* before_;
};

// The result of f with the library's warnings, which spoken() in R gives to the user.
template <class F> Rcpp::List with_warnings(F f)
{
    listening const ear(std::cerr);
    Rcpp::RObject const r = Rcpp::wrap(f());
    return Rcpp::List::create(r, ear.heard());
}
