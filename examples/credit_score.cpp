// From a delimited file to a rated score on a page.
//   credit_score [directory of the report [credit.txt]]
#include <varnow/varnow.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace varnow;

namespace {

double const least_iv = 0.02;
int const most_variables = 15;

struct sample
{
    matrix X, y;
};

// A column of numbers with its gaps filled by the middle of the rest; where there are gaps, a flag
// of them stands beside it.
matrix without_gaps(matrix x)
{
    Vector const known = x >= -1e300; // false for NaN
    if (sum(known) == x.rows) return x;
    double const middle = median(x.filter(known));
    matrix gap(!known);
    gap.colname(1) = x.colname(1) + " missing";
    for (int i = 1; i <= x.rows; ++i)
        if (gap(i) == 1) x(i) = middle;
    return x | gap;
}

// A 0/1 column for every level of a column of texts but the most frequent one, which the others are
// compared with.
matrix level_flags(table const& x)
{
    table const levels = unique(x);
    int reference = 1;
    for (int k = 2; k <= levels.rows; ++k)
        if (sum(x == levels(k)) > sum(x == levels(reference))) reference = k;

    matrix flags(x.rows, 0);
    for (int k = 1; k <= levels.rows; ++k) {
        if (k == reference) continue;
        matrix flag(x == levels(k));
        flag.colname(1) = x.colname(1) + " " + (levels(k) == "" ? t("missing") : levels(k));
        flags |= flag;
    }
    return flags;
}

void name_columns(matrix& m, table const& names)
{
    for (int j = 1; j <= m.cols; ++j) m.colname(j) = names(j);
}

// How many applications stand at each level of a column, and what share of them went bad.
table bad_rates(table const& level, matrix const& bad)
{
    table const both = level | table(bad);
    return both.summarise(c(level.colname(1)), "Applications=COUNT(bad)", count, "Bad=SUM(bad)",
                          sum, "Rate=MEAN(bad)", mean);
}

// The share of bad ones as a curve of one variable, fitted to the applications themselves.
matrix response_curve(matrix const& x, matrix const& bad)
{
    matrix par("-0.2; 0.1; 0; 0.3");
    fitx(x, bad, f_C, df_C, par, 1e-8, SpeedMedium, EsQuadratic, BFGS);
    return par;
}

// Information value of every column, highest first.
matrix information(sample const& s)
{
    matrix iv(s.X.cols, 1);
    iv.colname(1) = "IV";
    for (int j = 1; j <= s.X.cols; ++j) {
        iv(j) = IV(s.X[j], s.y, 10);
        iv.rowname(j) = s.X.colname(j);
    }
    iv.sort(1, Descending);
    return iv;
}

matrix measures(sample const& s, matrix const& score)
{
    matrix m = c(1.0 * s.X.rows, double(sum(s.y)), AR(score, s.y, 1, 1, 1, 0), KS(score, s.y));
    name_columns(m, c("Applications", "Bad", "AR", "KS"));
    return m;
}

matrix score_of(sample const& s, matrix const& par)
{
    return lm_score(logistic_val(s.X, par));
}

// Starts a plot that gnuplot draws as name.svg.
gplot plot_of(Text const& name, Text const& out, Text const& title, Text const& xlabel,
              Text const& ylabel)
{
    gplot g(name, out);
    g.set("terminal svg size 760,480 font 'Arial,13' background '#ffffff'");
    g.set("output '" + name + ".svg'");
    g.title(title);
    g.xlabel(xlabel);
    g.ylabel(ylabel);
    g.set("grid linecolor '#dddddd'");
    g.set("border 3");
    g.set("tics nomirror");
    return g;
}

void draw(gplot& g)
{
    g.close();
    Text const command = "cd \"" + g.path + "\" && gnuplot " + g.name + ".plt";
    if (std::system(command.str) != 0) std::printf("gnuplot could not draw %s.plt\n", g.name.str);
}

void draw_cap(sample const& learning, matrix const& a, sample const& validation, matrix const& b,
              Text const& out)
{
    gplot g = plot_of("cap", out, "Bad applications found among the worst scores",
                      "share of applications", "share of bad applications");
    g.key("right bottom");
    g.xrange(0, 1);
    g.yrange(0, 1);
    matrix const cap = CAP(a, learning.y, 1);
    g.plot(cap, "2:3", "learning", "lines linewidth 2 linecolor '#2196f3'",                       //
           CAP(b, validation.y, 1), "2:3", "validation", "lines linewidth 2 linecolor '#e65100'", //
           cap, "2:4", "perfect", "lines linecolor '#888888' dashtype 2",                         //
           cap, "2:2", "by chance", "lines linecolor '#bbbbbb'");
    draw(g);
}

void draw_ks(sample const& s, matrix const& score, Text const& out)
{
    double at, goods, bads;
    double const ks = KS_xy(score, s.y, at, goods, bads);
    gplot g = plot_of("ks", out, "Distribution of the score, validation sample", "score",
                      "share at or below");
    g.key("left top");
    g.yrange(0, 1);
    g.set("arrow 1 from " + dtot(at, 0) + "," + dtot(goods, 0) + " to " + dtot(at, 0) + "," +
          dtot(bads, 0) + " nohead linewidth 2 linecolor '#444444'");
    g.label(1, "KS " + dtot(ks, 3) + " at " + dtot(at, 1), at - 180, (goods + bads) / 2);
    matrix const cap = CAP(score, s.y, 1);
    g.plot(cap, "1:3", "bad", "steps linewidth 2 linecolor '#c62828'", //
           cap, "1:6", "good", "steps linewidth 2 linecolor '#2e7d32'");
    draw(g);
}

// Shares of a class in intervals of the score, 50 wide.
matrix score_shares(matrix const& score)
{
    int const width = 50, bins = 20;
    matrix shares = zeros(bins, 2);
    for (int k = 1; k <= bins; ++k) {
        shares(k, 1) = width * (k - 0.5);
        Vector const inside = (score > width * (k - 1.0)) && (score <= 1.0 * width * k);
        shares(k, 2) = 1.0 * sum(inside) / score.rows;
    }
    return shares;
}

void draw_histogram(sample const& s, matrix const& score, Text const& out)
{
    gplot g = plot_of("histogram", out, "Score by outcome, validation sample", "score",
                      "share of the class");
    g.key("left top");
    g.style("fill transparent solid 0.5 border");
    g.boxwidth(48);
    g.xrange(0, 1000);
    g.plot(score_shares(score.filter(s.y == 1)), "1:2", "bad ones", "boxes linecolor '#c62828'", //
           score_shares(score.filter(s.y == 0)), "1:2", "good ones", "boxes linecolor '#2e7d32'");
    draw(g);
}

void draw_rates(table const& rates, Text const& out)
{
    gplot g = plot_of("rates", out, "Bad applications by years in the job", "Seniority",
                      "share of bad ones");
    g.key("off");
    g.style("fill solid 0.6");
    g.boxwidth(0.8);
    g.set("yrange [0:*]");
    g.plot(rates, "0:4:xtic(1)", "", "boxes linecolor '#2196f3'");
    draw(g);
}

void draw_response(table const& rates, matrix par, double longest, Text const& out)
{
    gplot g = plot_of("response", out, "Response curve of the years in the job", "Seniority",
                      "share of bad ones");
    g.yrange(0, 1);
    matrix curve = ~linspace(0, longest, 200);
    curve |= forall(curve, [](double) { return 0.0; });
    for (int i = 1; i <= curve.rows; ++i) curve(i, 2) = f_C(curve(i, 1), par);
    g.plot(matrix(rates), "1:4:(0.25*sqrt($2)/3)", "share in the data",
           "points pointtype 7 pointsize variable", curve, "1:2", "fitted",
           "lines linewidth 2 linecolor '#c62828'");
    draw(g);
}

// The net of the step with the least error in the sample kept aside, set 1; `curve` gets the root
// of the mean squared error of both samples at each step.
neural_net learned_net(neural_net net, int steps, matrix& curve)
{
    neural_net best = net;
    double least = net.error(1);
    curve = matrix(steps, 3);
    for (int k = 1; k <= steps; ++k) {
        net.backprop(1, 0, 1, 0);
        double const aside = net.error(1);
        curve.setrow(k, c(1.0 * k, std::sqrt(net.error(0)), std::sqrt(aside)));
        if (aside < least) {
            least = aside;
            best = net;
        }
    }
    return best;
}

matrix net_values(neural_net net, matrix const& X)
{
    net.set_patterns(X, zeros(X.rows, 1), 2);
    return net.values(2);
}

void draw_learning(matrix const& curve, Text const& out)
{
    gplot g = plot_of("network", out, "Learning of the network", "step",
                      "root of the mean squared error");
    g.key("right top");
    g.plot(curve, "1:2", "learns from", "lines linewidth 2 linecolor '#2196f3'", //
           curve, "1:3", "kept aside", "lines linewidth 2 linecolor '#e65100'");
    draw(g);
}

text_properties heading()
{
    text_properties p;
    p.bold = 1;
    p.size = 5;
    return p;
}

text_properties plain()
{
    text_properties p;
    p.size = 3;
    return p;
}

table_properties captioned(Text const& caption, int rownames = 1)
{
    table_properties p;
    p.caption = caption;
    p.header_bgcolor = "#e3f2fd";
    p.border = 1;
    p.cellspacing = 0;
    p.cellpadding = 5;
    p.show_rownames = rownames;
    return p;
}

} // namespace

int main(int argc, char** argv)
{
    Text const out = argc > 1 ? Text(argv[1]) + "/" : "";
    Text const file = argc > 2 ? argv[2] : "examples/data/credit.txt";

    // Read the applications as texts and, once more, as numbers: a gap is an empty text and a NaN.
    std::printf("Reading %s: ", file.str);
    table texts;
    texts.readtxt(file.str, 1, 0, 1, 0, ';');
    matrix numbers;
    numbers.readtxt(file.str, 0, 0, 1, 0, ';');
    std::printf("\n%d applications, %d columns\n", texts.rows, texts.cols);

    // Make the candidates: numbers without gaps, and flags of the levels of texts.
    sample all;
    all.y = matrix(texts["Status"] == "bad");
    all.y.colname(1) = "bad";
    all.X = matrix(texts.rows, 0);
    matrix gaps(1, 0);
    for (char const* name :
         {"Seniority", "Time", "Age", "Expenses", "Income", "Assets", "Debt", "Amount", "Price"})
        all.X |= without_gaps(numbers[name]);
    for (char const* name : {"Home", "Marital", "Records", "Job"})
        all.X |= level_flags(texts[name]);
    for (int j = 2; j <= texts.cols; ++j) {
        matrix gap(1.0 * sum(texts[j] == ""));
        gap.colname(1) = texts.colname(j);
        if (gap(1) > 0) gaps |= gap;
    }

    // Split, choose the variables on the learning sample, bring them to one scale.
    Vector const chosen = rand(all.X.rows, 1) < 0.7;
    sample learning = {all.X.filter(chosen), all.y.filter(chosen)};
    sample validation = {all.X.filter(!chosen), all.y.filter(!chosen)};

    matrix iv = information(learning);
    Vector const strong = find(iv["IV"] >= least_iv);
    table const variables =
        ~rownames(iv.row($(strong.n < most_variables ? strong.n : most_variables)));
    auto select = [&](matrix const& X) {
        matrix r(X.rows, 0);
        for (int j = 1; j <= variables.cols; ++j) r |= X[variables(j)];
        return r;
    };
    learning.X = select(learning.X);
    validation.X = select(validation.X);
    matrix const centre = mean(learning.X), spread = stdev(learning.X);
    for (sample* s : {&learning, &validation})
        for (int i = 1; i <= s->X.rows; ++i)
            for (int j = 1; j <= s->X.cols; ++j) s->X(i, j) = (s->X(i, j) - centre(j)) / spread(j);

    // Fit by the three estimators.
    matrix estimators(3, 4), par;
    struct
    {
        char const* name;
        matrix (*fit)(sample const&);
    } const ways[] = {
        {"logistic_par1", [](sample const& s) { return logistic_par1(s.X, s.y); }},
        {"logistic_par2", [](sample const& s) { return logistic_par2(s.X, s.y, 2, 1e-8); }},
        {"logistic_par", [](sample const& s) { return logistic_par(s.X, s.y, 2, 1e-6); }},
    };
    matrix newton;
    for (int k = 1; k <= 3; ++k) {
        double const start = clock_now();
        par = ways[k - 1].fit(learning);
        if (k == 1) newton = par;
        estimators.rowname(k) = ways[k - 1].name;
        estimators(k, 1) = 1000 * (clock_now() - start);
        estimators(k, 2) = -logistic_lcl(learning.X, learning.y, par, 1, 2);
        estimators(k, 3) = AR(score_of(learning, par), learning.y, 1, 1, 1, 0);
        estimators(k, 4) = AR(score_of(validation, par), validation.y, 1, 1, 1, 0);
    }
    name_columns(estimators, c("Milliseconds", "Log-likelihood", "AR learning", "AR validation"));

    // The coefficients of the standardised columns, and those of the columns as they are in the
    // file.
    matrix coefficients(par.rows, 3);
    name_columns(coefficients, c("Standardised", "Original scale", "IV"));
    double intercept = par(par.rows);
    for (int j = 1; j < par.rows; ++j) {
        coefficients.rowname(j) = variables(j);
        coefficients(j, 1) = par(j);
        coefficients(j, 2) = par(j) / spread(j);
        coefficients(j, 3) = iv(variables(j), 1);
        intercept -= par(j) * centre(j) / spread(j);
    }
    coefficients.rowname(par.rows) = "(intercept)";
    coefficients(par.rows, 1) = par(par.rows);
    coefficients(par.rows, 2) = intercept;
    coefficients(par.rows, 3) = __NAN<double>();

    // Rate both samples.
    matrix const learned = score_of(learning, par), validated = score_of(validation, par);
    matrix rating = measures(learning, learned) & measures(validation, validated);
    rating.rowname(1) = "learning";
    rating.rowname(2) = "validation";
    draw_cap(learning, learned, validation, validated, out);
    draw_ks(validation, validated, out);
    draw_histogram(validation, validated, out);

    // A network on the same variables: three quarters of the learning sample teach it, the rest
    // tells when to stop. Saved and loaded again it gives the same score.
    int const hidden = 4, steps = 60;
    Vector const teach = rand(learning.X.rows, 1) < 0.75;
    neural_net net(learning.X.cols, hidden, 2, 1);
    net.init(0.1);
    net.set_patterns(learning.X.filter(teach), learning.y.filter(teach), 0);
    net.set_patterns(learning.X.filter(!teach), learning.y.filter(!teach), 1);
    matrix curve;
    net = learned_net(net, steps, curve);
    draw_learning(curve, out);
    net.save(out + "network");
    neural_net loaded;
    loaded.load(out + "network");
    matrix const by_net[] = {net_values(net, learning.X), net_values(net, validation.X)};
    double const apart = max(abs(net_values(loaded, validation.X) - by_net[1]));
    matrix comparison = (rating(1, 3) | matrix(rating(2, 3))) &
                        (AR(lm_score(by_net[0]), learning.y, 1, 1, 1, 0) |
                         matrix(AR(lm_score(by_net[1]), validation.y, 1, 1, 1, 0)));
    name_columns(comparison, c("AR learning", "AR validation"));
    comparison.rowname(1) = "logistic regression";
    comparison.rowname(2) = "network";
    comparison.writetxt((out + "network.txt").str, 0, 1);

    // Leave the data of the fit and the results beside the page.
    (learning.X | learning.y).writetxt((out + "learning.txt").str);
    (validation.X | validation.y | validated).writetxt((out + "validation.txt").str);
    (newton | par).writetxt((out + "parameters.txt").str);
    rating.writetxt((out + "rating.txt").str, 0, 1);

    // Explore: shares of bad ones by category, by interval and as a curve.
    matrix const seniority = numbers["Seniority"];
    table intervals = cut(seniority, "1 3 6 9");
    intervals.colname(1) = "Seniority";
    table const by_interval = bad_rates(intervals, all.y);
    matrix const response = response_curve(seniority, all.y);
    draw_rates(by_interval, out);
    draw_response(bad_rates(texts["Seniority"], all.y), response, double(max(seniority)), out);
    response.writetxt((out + "response.txt").str, 0, 0, 0);

    // Report.
    gnuplot_script_directory = varnow_script_directory = "js/";
    html page("Credit score", "A score for credit applications",
              "credit, score, logistic regression");
    page.tab("Data");
    page.chapter("The file", heading());
    page.paragraph(itot(texts.rows) + " credit applications, of which " + itot(int(sum(all.y))) +
                       " went bad. The first ones:",
                   plain());
    page.htable(texts.row($(8)), captioned("The first applications", 0));
    page.endline(1);
    page.chapter("Gaps", heading());
    page.paragraph("Gaps in numbers are filled with the median, and a flag tells where they were; "
                   "a gap in a text "
                   "is a level of its own.",
                   plain());
    page.hmatrix(gaps, zeros(1, gaps.cols), captioned("Missing values by column", 0));
    page.endline(1);
    page.chapter("Variables", heading());
    page.paragraph(
        "Information value of each candidate over ten groups of the learning sample. The " +
            itot(variables.cols) + " best of at least " + dtot(least_iv, 2) + " enter the model.",
        plain());
    page.hmatrix(iv, 4, captioned("Information value"));

    page.tab("Exploration");
    page.chapter("Categories", heading());
    for (char const* name : {"Home", "Job", "Records"}) {
        page.htable(bad_rates(texts[name], all.y), c(0, 0, 0, -1),
                    captioned(Text("Percent of bad ones by ") + name, 0));
        page.endline(1);
    }
    page.htable(pivot(texts["Job"], texts["Records"]),
                captioned("Applications by job and records", 0));
    page.endline(1);
    page.chapter("Intervals", heading());
    page.htable(by_interval, c(0, 0, 0, -1),
                captioned("Percent of bad ones by years in the job", 0));
    page.image("rates.svg", "", "center", 760, 480);
    page.endline(1);
    page.chapter("Response curve", heading());
    page.paragraph("The share of bad ones as a sigmoid of the years in the job, fitted by least "
                   "squares; the size "
                   "of a point tells how many applications stand there.",
                   plain());
    page.image("response.svg", "", "center", 760, 480);

    page.tab("Model");
    page.chapter("Coefficients", heading());
    page.paragraph("Log-odds of a bad outcome, for columns of mean 0 and deviation 1 and for the "
                   "columns as they "
                   "stand in the file.",
                   plain());
    page.hmatrix(coefficients, c(4, 6, 3), captioned("Coefficients"));
    page.endline(1);
    page.chapter("Estimators", heading());
    page.paragraph("Newton's iteration without a ridge, and the conjugate searches with one, over "
                   "all rows and "
                   "over growing samples.",
                   plain());
    page.hmatrix(estimators, c(1, 3, 4, 4), captioned("The three estimators"));
    page.endline(1);
    page.chapter("Network", heading());
    page.paragraph("A feed-forward network with " + itot(hidden) +
                       " hidden units on the variables of the regression. Its score is made of the "
                       "predicted probability in the same way.",
                   plain());
    page.hmatrix(comparison, c(4, 4), captioned("Accuracy ratio of both scores"));
    page.endline(1);
    page.paragraph("It learns from three quarters of the learning sample, step by step. The "
                   "weights of the step with the least error in the quarter kept aside are taken: "
                   "from there on it learns what is peculiar to its sample.",
                   plain());
    page.image("network.svg", "", "center", 760, 480);
    page.paragraph("Six text files, network_*.nn, hold it to six digits. Loaded again, its "
                   "probabilities in the validation sample differ by at most " +
                       dtot(1e6 * apart, 1) + " millionths.",
                   plain());

    page.tab("Rating");
    page.chapter("Measures", heading());
    page.hmatrix(rating, c(0, 0, 4, 4),
                 captioned("Accuracy ratio and Kolmogorov-Smirnov distance"));
    page.endline(1);
    page.chapter("CAP curve", heading());
    page.image("cap.svg", "", "center", 760, 480);
    page.endline(1);
    page.chapter("Distributions", heading());
    page.image("ks.svg", "", "center", 760, 480);
    page.endline(1);
    page.chapter("Histogram", heading());
    page.image("histogram.svg", "", "center", 760, 480);
    page.endline(1);
    page.chapter("Acceptance", heading());
    page.paragraph(
        "What accepting all applications from a score on would mean, in the validation sample.",
        plain());
    page.htable(TA(validated, validation.y, 20), c(0, 0, 0, -1, -2),
                captioned("Acceptance table", 0));
    page.save(out, "report.html");

    for (int i = 1; i <= 2; ++i)
        std::printf("%-10s  %5.0f applications  AR %.4f  KS %.4f\n", rating.rowname(i).str,
                    rating(i, 1), rating(i, 3), rating(i, 4));
    std::printf("network       learning AR %.4f  validation AR %.4f\n", comparison(2, 1),
                comparison(2, 2));
    std::printf("Report: %sreport.html\n", out.str);
}
