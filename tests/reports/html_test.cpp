#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/reports/html.h>

#include "tests/support/folder.h"
#include "tests/support/refusals.h"

#include <functional>
#include <string>
#include <utility>

namespace varnow {
namespace {

html report()
{
    html r("Title", "About", "key, words");
    r.tab("one");
    return r;
}

std::string body(html const& r)
{
    return r.tab_bodies(1, r.ntabs).str;
}

TEST(Html, HeadCarriesTheTextsAndTheScriptsOfBothDirectories)
{
    Text const ours = varnow_script_directory, theirs = gnuplot_script_directory;
    EXPECT_EQ(theirs, "C:\\Program Files\\gnuplot\\share\\js\\");
    EXPECT_EQ(ours, "C:\\Program Files\\Varnow\\js\\");
    varnow_script_directory = "v/";
    gnuplot_script_directory = "g/";
    std::string const head = report().head.str;
    varnow_script_directory = ours;
    gnuplot_script_directory = theirs;

    EXPECT_THAT(head, testing::HasSubstr("\"-//W3C//DTD XHTML 1.0 Transitional//EN\""));
    EXPECT_THAT(
        head,
        testing::EndsWith(
            "<head>\n  <meta http-equiv='Content-Type' content='text/html; charset=iso-8859-2' />\n"
            "  <meta name='Description' content='About' />\n"
            "  <meta name='Keywords' content='key, words' />\n"
            "  <title>Title</title>\n"
            "  <script src='g/canvasmath.js'></script>\n"
            "  <script src='g/canvastext.js'></script>\n"
            "  <script src='g/gnuplot_common.js'></script>\n"
            "  <script src='g/gnuplot_dashedlines.js'></script>\n"
            "  <script src='g/gnuplot_mouse.js'></script>\n"
            "  <script src='g/gnuplot_svg.js'></script>\n"
            "  <script src='v/updating.js'></script>\n  <script src='v/tabs.js'></script>\n"
            "  <link rel=\"stylesheet\" type=\"text/css\" href=\"varnow.css\">\n</head>\n"));
}

TEST(Html, WritesEachElementByItsProperties)
{
    table cells(2, 2);
    cells.test("", "c");
    text_properties const loud = {1, 0, 1, 4, "red", ""};
    table_properties const framed = {"Cap", "top", "50%", "", "", "", "blue", 1, 0};
    table_properties const bare = {"", "", "", "", "", "", "", 0, 0};
    std::pair<char const*, std::function<void(html&)>> const elements[] = {
        {"  <font color='red' size='4'><b><u>\n  x\n  </u></b></font>\n",
         [&](html& r) { r.htext("x", loud); }},
        {"  <a name=\"C1\"></a>\n  <font size='1'>\n  Start\n  </font>\n",
         [](html& r) { r.chapter("Start"); }},
        {"  <p align='right' font size='1'>\n  text\n  </p>\n",
         [](html& r) { r.paragraph("text", text_properties(), "right"); }},
        {"  <img src='d/a.png' alt='Blad w add_image: nie znaleziono obrazka!' align='left' "
         "width='3' height='4'/>\n",
         [](html& r) { r.image("a.png", "d/", "left", 3, 4); }},
        {"  <center><img src='d/a.png' alt='Blad w add_image: nie znaleziono obrazka!' width='3' "
         "height='0'/></center>\n",
         [](html& r) { r.image("a.png", "d/", "center", 3, 0); }},
        {"  <a href='d/u'>label</a>\n", [](html& r) { r.href("u", "d/", "label"); }},
        {"  <a href='u'><img src='p.png' alt='Blad w add_href: nie znaleziono obrazka!' "
         "border='0'/></a>\n",
         [](html& r) { r.href("u", "", "label", "p.png"); }},
        {"  <br/>\n  <br/>\n", [](html& r) { r.endline(2); }},
        {"  <script src='d/f.js'></script>\n  <canvas id='f' width=6 height=7>\n"
         "    <div id='err_msg'>No support for HTML 5 canvas element</div>\n  </canvas>\n",
         [](html& r) { r.js("f", "d/", 6, 7); }},
        {"  <table border='4' cellpadding='4' cellspacing='2'>\n"
         "  <tr><th>&nbsp</th><th>C1</th><th>C2</th></tr>\n"
         "  <tr><th>R1</th><td>c1</td><td>c2</td></tr>\n"
         "  <tr><th>R2</th><td>c3</td><td>c4</td></tr>\n  </table>\n",
         [&](html& r) { r.htable(cells); }},
        {"  <table border='4' cellpadding='4' cellspacing='2' width='50%'>\n"
         "  <caption align='top'>Cap</caption>\n"
         "  <tr bgcolor='blue'><th>C1</th><th>C2</th></tr>\n"
         "  <tr><td>c1</td><td>c2</td></tr>\n  </table>\n",
         [&](html& r) { r.htable(cells.row(1), framed); }},
        // Decimals, whole numbers and percents.
        {"  <table border='4' cellpadding='4' cellspacing='2'>\n"
         "  <tr><td>1.235</td><td>3</td><td>-2</td><td>1000000000000</td><td>12.3</td>"
         "<td>50.00</td><td>1.5</td><td></td></tr>\n  </table>\n",
         [&](html& r) {
             r.hmatrix("1.23456 2.5 -2.5 1e12 0.12345 0.5 1.5 nan", "3 0 0 0 -1 -2.4 0.6 2", bare);
         }},
        {"  <table border='4' cellpadding='4' cellspacing='2'>\n"
         "  <tr><td>0.50</td><td>half</td></tr>\n  </table>\n",
         [&](html& r) { r.htable(c("0,5", "half"), "2 2", bare); }},
    };
    for (auto const& [written, add] : elements) {
        html r = report();
        add(r);
        EXPECT_EQ(body(r), written);
    }
}

TEST(HtmlDeathTest, RefusesWrongFormatsFullTabsAndClosedPlaces)
{
    html r = report(), full = report(), untabbed("", "", "");
    for (int k = 2; k <= 10; ++k) full.tab("t");
    for (int k = 1; k <= 10; ++k) full.chapter("c");
    matrix const m(varnow::ones(2, 2));
    folder out;
    out.make_folder("varnow.css");
    Text const dir = out.path("");
    char const* const of_matrix = "void add_matrix(matrix,matrix,table_properties)";
    char const* const of_table = "void add_table(table,matrix,table_properties)";
    char const* const no_vector = "zmienna definiujaca format kolumn nie jest wektorem";
    std::string const length =
        "wektor definiujacy format kolumn ma dlugosc niezgodna z liczba kolumn ";
    test::refusal const cases[] = {
        {[&] { r.hmatrix(m, m); }, of_matrix, no_vector},
        {[&] { r.hmatrix(m, "1 2 3"); }, of_matrix, length + "macierzy"},
        {[&] { r.htable(table(m), m); }, of_table, no_vector},
        {[&] { r.htable(table(m), matrix()); }, of_table, length + "tabeli"},
        {[&] { r.save("no-such-directory/", "a.html"); }, "void save(Text,Text)",
         "nieudane otwarcie pliku do zapisu", "katalog: no-such-directory/, plik: a.html"},
        {[&] { r.save(dir, "a.html"); }, "html(Text,Text,Text)", "nieudany zapis stylow css",
         std::string("katalog: ") + dir.str + ", plik: a.html"},
    };
    test::expect_refusals("HTML", cases);
    char const* const element = "Text & operator ()(int,int)";
    char const* const outside = "indeks poza zakresem";
    test::refusal const places[] = {
        {[&] { full.tab("t"); }, element, outside, "1 x 10 : ( 1 , 11 )"},
        {[&] { full.chapter("c"); }, element, outside, "10 x 10 : ( 11 , 10 )"},
        {[&] { untabbed.htext("x"); }, element, outside, "1 x 10 : ( 1 , 0 )"},
    };
    test::expect_refusals("TABLE", places);
}

TEST(Html, SavesOneTabBareAndSeveralWithButtonsAndNavigation)
{
    folder const out;
    html r = report();
    std::string const head = r.head.str;
    r.htext("first");
    r.save(out.path(""), "bare.html");
    EXPECT_EQ(out.text("bare.html"),
              head + "<body>\n<div class=\"main\">\n" + body(r) + "</div>\n\n</body>\n</html>");
    EXPECT_EQ(out.text("varnow.css"), r.style().str);

    r.background("#fff");
    r.chapter("A");
    r.chapter("B");
    std::string const first = body(r);
    r.tab("two");
    for (char const* name : {"C", "D", "E"}) r.chapter(name);
    for (char const* name : {"f1", "f2", "f3"}) r.js(name, "", 1, 1);
    r.save(out.path(""), "tabs.html");
    EXPECT_EQ(out.text("tabs.html"),
              head +
                  "<body bgcolor='#fff' onload='f1();f2();f3();'>\n"
                  "<button class=\"tablink\" onclick=\"openPage('one', this, 'green')\">"
                  "one</button>\n"
                  "<button class=\"tablink\" onclick=\"openPage('two', this, 'green')\">"
                  "two</button>\n"
                  "<div id=\"one\" class=\"tabcontent\">\n<div class=\"sidenav\">\n"
                  "<a href=\"#C1\">A</a>\n<a href=\"#C2\">B</a>\n</div>\n\n"
                  "<div class=\"main\">\n" +
                  first +
                  "</div>\n</div>\n\n"
                  "<div id=\"two\" class=\"tabcontent\">\n<div class=\"sidenav\">\n"
                  "<a href=\"#C3\">C</a>\n<a href=\"#C4\">D</a>\n<a href=\"#C5\">E</a>\n"
                  "</div>\n\n<div class=\"main\">\n" +
                  body(r) + "</div>\n</div>\n\n\n</body>\n</html>");
}

TEST(Html, GrowsItsCanvasesAndStartsAnewAfterClear)
{
    html r = report();
    for (int k = 1; k <= 25; ++k) r.js("f" + itot(k), "", 1, 1);
    EXPECT_EQ(r.functions.rows, 30);
    EXPECT_EQ(r.functions(25, 1), "f25");
    html copy = r;
    r.clear();
    EXPECT_EQ(r.nfunctions, 0);
    EXPECT_EQ(r.ntabs, 0);
    r.tab("new");
    EXPECT_EQ(body(r), "");
    EXPECT_EQ(copy.nfunctions, 25);
}

} // namespace
} // namespace varnow
