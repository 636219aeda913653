// Writer of HTML reports: tabs, chapters, formatted tables, images and gnuplot canvases.
#pragma once

#include <varnow/containers/table.h>

namespace varnow {

/// Directories, with their closing separator, of the scripts that pages load: gnuplot's own six,
/// and this library's `updating.js` and `tabs.js` (installed under share/varnow/js). A program sets
/// them before it makes a report; a relative one is resolved from the page's place.
VARNOW_API extern Text gnuplot_script_directory;
VARNOW_API extern Text varnow_script_directory;

/// Format of a run of text.
struct text_properties
{
    int bold = 0, italic = 0, underline = 0;
    int size = 1;
    Text color, face;
};

/// Format of a table.
struct table_properties
{
    Text caption, caption_align, width, height, align, bgcolor, header_bgcolor;
    int show_colnames = 1;
    int show_rownames = 1;
    int border = 4;
    int cellpadding = 4;
    int cellspacing = 2;
};

/// An attribute: a blank, the name, "='", the value and "'"; the empty text for an empty value.
VARNOW_API Text property(Text const& name, Text const& value);

/// A report, collected in memory and written by `save`. It has room for 10 tabs of 10 chapters; one
/// more is refused as a cell out of range, as is any content before the first `tab`. Texts go to
/// the page as they are, markup and code page (the page declares iso-8859-2) included.
class VARNOW_API html
{
public:
    Text head;             ///< the page's head, complete after construction
    Text background_color; ///< of the page
    int nfunctions;        ///< canvases
    table functions;       ///< their names, one a row
    int ntabs;
    table tab_names;  ///< cell (1, k) for tab k
    table tab_bodies; ///< likewise
    int nchapters;    ///< in the whole report
    Vector tab_chapters;
    table chapter_names; ///< cell (i, k) for chapter i of tab k

    html(Text const& title, Text const& description, Text const& keywords);

    void background(Text const& x) { background_color = x; }
    /// Starts a tab, to which all that follows is added.
    void tab(Text const& x);
    void htext(Text const& x, text_properties const& p = text_properties());
    /// A heading that the side navigation links to.
    void chapter(Text const& x, text_properties const& p = text_properties());
    void paragraph(Text const& x, text_properties const& p = text_properties(),
                   Text const& align = "left");
    /// align "center" centres the image; w and h are pixels.
    void image(Text const& file, Text const& dir, Text const& align, int w, int h);
    /// A link on a label or, where one is given, on a picture.
    void href(Text const& url, Text const& dir, Text const& label, Text const& picture = Text());
    void endline(int n);
    /// Forgets tabs, chapters, canvases and background.
    void clear();
    /// A gnuplot canvas: loads dir + name + ".js", whose function `name` draws it.
    void js(Text const& name, Text const& dir, int w, int h);

    void htable(table const& t, table_properties const& p = table_properties());
    /// With a format for each column, rounded to an integer: above 0 that many decimals, 0 a whole
    /// number, below 0 a percentage with that many decimals. In a table only cells that are numbers
    /// are changed.
    /// - refuse: fmt not a vector; not one entry per column
    void hmatrix(matrix const& m, matrix const& fmt,
                 table_properties const& p = table_properties());
    void htable(table const& t, matrix const& fmt, table_properties const& p = table_properties());

    /// The style sheet; the buttons of the tabs (none for one tab); the chapters of tab k.
    Text style() const;
    Text tablink() const;
    Text sidenav(int k) const;

    /// The whole page.
    Text page() const;
    /// Writes `page` to dir + file, and dir + "varnow.css". - refuses: a file that cannot be
    /// written
    void save(Text const& dir, Text const& file) const;

private:
    Text& body();
};

} // namespace varnow
