// Monte Carlo on many machines: the distribution of the loss of a loan portfolio whose borrowers
// share one factor. Workers take tasks off one list in a folder that all of them see.
//
//   portfolio_loss FOLDER                          all of it in this process
//   portfolio_loss FOLDER list [TASKS SCENARIOS]   writes a new list
//   portfolio_loss FOLDER work                     a worker: does tasks until none is left
//   portfolio_loss FOLDER merge                    waits for the last task, merges and reports
//   portfolio_loss FOLDER repair                   after a crash, when no worker runs
#include <varnow/varnow.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

using namespace varnow;

namespace {

// The asset value below which a loan of this probability defaults.
double default_point(double pd)
{
    double a = -10, b = 10;
    for (int i = 0; i < 60; ++i) (phi((a + b) / 2) < pd ? a : b) = (a + b) / 2;
    return a;
}

struct grade
{
    int loans;
    double exposure; // of each loan, thousands
    double pd;       // probability of default
    double point = default_point(pd);
};
grade const portfolio[] = {{150, 40, 0.002}, {120, 25, 0.01}, {60, 10, 0.04}};
double const correlation = 0.15;
double const least_lgd = 0.2, most_lgd = 0.7; // loss given default, uniform
double const levels[] = {0.99, 0.999};

// The library's generator goes on from task to task; this one starts from the task's own seed, so
// that a task gives the same losses on whatever worker.
class generator
{
public:
    explicit generator(int seed) : bits_(static_cast<std::uint64_t>(seed)) {}
    double uniform() { return (static_cast<double>(bits_() >> 11) + 0.5) * 0x1p-53; }
    double normal()
    {
        double const r = std::sqrt(-2 * std::log(uniform()));
        return r * std::cos(6.283185307179586 * uniform());
    }

private:
    std::mt19937_64 bits_;
};

double loss(generator& random)
{
    double const common = std::sqrt(correlation) * random.normal(),
                 own = std::sqrt(1 - correlation);
    double sum = 0;
    for (grade const& g : portfolio) {
        double const pd = phi((g.point - common) / own);
        for (int k = 0; k < g.loans; ++k)
            if (random.uniform() < pd)
                sum += g.exposure * (least_lgd + (most_lgd - least_lgd) * random.uniform());
    }
    return sum;
}

// What a task leaves. Below this number of scenarios its quantiles hold every value; beyond, they
// choose what to drop by the library's generator, and the merged result would depend on who did
// what.
int const most_scenarios = 100000;
struct outcome
{
    simulation losses = simulation(0, 1000, 50);
    quantiles tails[2] = {quantiles(levels[0]), quantiles(levels[1])};
};

Text list_in(Text const& folder)
{
    return folder + "tasks.txt";
}

Text result_of(int task, Text const& folder, char const* kind)
{
    return folder + "loss_" + itot(task) + kind;
}

void write(FILE* f, quantiles const& q)
{
    matrix head =
        c(1.0 * q.frozen, 1.0 * q.n, 1.0 * q.below, 1.0 * q.above, q.p, q.sigma, q.lo, q.hi);
    head.writebin(f);
    q.tab.row($(q.used)).writebin(f);
}

quantiles read(FILE* f)
{
    matrix head, rows;
    head.readbin(f);
    rows.readbin(f);
    quantiles q(head(5));
    q.frozen = int(head(1));
    q.n = int(head(2));
    q.below = int(head(3));
    q.above = int(head(4));
    q.sigma = head(6);
    q.lo = head(7);
    q.hi = head(8);
    q.used = rows.rows;
    q.tab.setrow($(rows.rows), rows);
    return q;
}

// Files come under their names when they are whole: the task of a worker that hangs may be done by
// another one at the same time. The task is finished only after what stands there is known to be
// sound.
void save(outcome const& o, int task, Text const& folder)
{
    auto place = [&](char const* kind, auto write_to) {
        Text const name = result_of(task, folder, kind);
        Text const draft = name + "." + Text(std::to_string(std::random_device{}()));
        if (!write_to(draft)) {
            std::fprintf(stderr, "%s could not be written\n", name.str);
            std::exit(1);
        }
        std::filesystem::rename(draft.str, name.str);
    };
    place(".sim", [&](Text const& draft) {
        o.losses.save(draft);
        simulation copy;
        copy.load(draft);
        return copy.n == o.losses.n;
    });
    place(".tail", [&](Text const& draft) {
        FILE* const f = std::fopen(draft.str, "wb");
        if (!f) return false;
        for (quantiles const& q : o.tails) write(f, q);
        bool const sound = !std::ferror(f);
        return std::fclose(f) == 0 && sound;
    });
}

void list(Text const& folder, int number, int scenarios)
{
    tasks t(number, 2, list_in(folder));
    for (int i = 1; i <= number; ++i) {
        t(i, 1) = itot(i); // the seed
        t(i, 2) = itot(scenarios);
    }
    t.startall();
    t.save();
}

void work(Text const& folder)
{
    tasks t;
    t.changename(list_in(folder));
    for (;;) {
        t.lock();
        int const task = t.find();
        if (task > 0) t.reserve(task);
        t.unlock();
        if (task == 0) return;

        std::printf("task %d\n", task);
        outcome o;
        generator random(ttoi(t(task, 1)));
        for (int k = ttoi(t(task, 2)); k > 0; --k) {
            double const x = loss(random);
            o.losses.add(x);
            for (quantiles& q : o.tails) q.add(x);
        }
        save(o, task, folder);

        t.lock();
        t.finish(task);
        t.unlock();
    }
}

void repair(Text const& folder)
{
    tasks t;
    t.changename(list_in(folder));
    t.lock();
    t.repair();
    t.save();
    t.unlock();
}

double tail(int number, int level, Text const& folder)
{
    quantiles2 all(number);
    for (int task = 1; task <= number; ++task) {
        FILE* const f = std::fopen(result_of(task, folder, ".tail").str, "rb");
        if (!f) {
            std::fprintf(stderr, "no results of task %d\n", task);
            std::exit(1);
        }
        quantiles q = read(f);
        if (level == 1) q = read(f);
        std::fclose(f);
        all += q;
    }
    return all.result();
}

void draw(simulation const& losses, matrix const& tails, Text const& folder)
{
    gplot g("loss", folder);
    g.set("terminal svg size 760,480 font 'Arial,13' background '#ffffff'");
    g.set("output 'loss.svg'");
    g.title("Loss of the portfolio in a year");
    g.xlabel("loss, thousands");
    g.ylabel("share of scenarios");
    g.set("logscale y");
    g.set("format y '%g'");
    g.boxwidth(losses.width);
    g.set("grid linecolor '#dddddd'");
    g.style("fill transparent solid 0.5 border");
    for (int k = 1; k <= 2; ++k)
        g.set("arrow " + itot(k) + " from " + dtot(tails(k), 2) + ", graph 0 to " +
              dtot(tails(k), 2) + ", graph 0.8 nohead linewidth 2 linecolor '#c62828'");
    matrix const shares = losses.hist();
    g.plot(shares.filter(shares[2] > 0), "1:2", "scenarios", "boxes linecolor '#2196f3'");
    g.close();
    Text const command = "cd \"" + folder + "\" && gnuplot loss.plt";
    if (std::system(command.str) != 0) std::printf("gnuplot could not draw loss.plt\n");
}

void merge(Text const& folder)
{
    tasks t;
    t.changename(list_in(folder));
    t.synchronize();

    // in the order of the list, so that every sum adds up in the same order
    simulation losses;
    for (int task = 1; task <= t.n_tasks; ++task) {
        simulation one;
        one.load(result_of(task, folder, ".sim"));
        losses += one;
    }
    matrix tails(2, 1);
    for (int k = 0; k < 2; ++k) tails(k + 1) = tail(t.n_tasks, k, folder);

    double expected = 0;
    for (grade const& g : portfolio)
        expected += g.loans * g.exposure * g.pd * (least_lgd + most_lgd) / 2;
    matrix measures = ~c(1.0 * losses.length(), expected, losses.mean(), losses.stdev(),
                         losses.skewness(), losses.max(), tails(1), tails(2));
    char const* const names[] = {"scenarios",          "expected loss",     "mean loss",
                                 "standard deviation", "skewness",          "largest loss",
                                 "quantile at 99 %",   "quantile at 99.9 %"};
    measures.colname(1) = "value";
    for (int k = 1; k <= measures.rows; ++k) measures.rowname(k) = names[k - 1];
    losses.save(folder + "merged.sim");
    measures.writetxt((folder + "merged.txt").str, 0, 1);
    measures.display();

    draw(losses, tails, folder);
    html page("Portfolio loss", "Loss distribution by simulation", "credit risk, simulation");
    text_properties heading;
    heading.bold = 1;
    heading.size = 5;
    table_properties look;
    look.border = 1;
    look.cellspacing = 0;
    page.tab("Loss");
    page.chapter("Measures", heading);
    page.hmatrix(measures, 2, look);
    page.endline(1);
    page.chapter("Distribution", heading);
    page.paragraph("The lines stand at the quantiles at 99 % and 99.9 %.");
    page.image("loss.svg", "", "center", 760, 480);
    page.save(folder, "report.html");
    std::printf("Report: %sreport.html\n", folder.str);
}

} // namespace

int main(int argc, char** argv)
{
    Text const folder = argc > 1 ? Text(argv[1]) + "/" : "";
    std::string const step = argc > 2 ? argv[2] : "all";
    int const number = argc > 4 ? std::atoi(argv[3]) : 12;
    int const scenarios = argc > 4 ? std::atoi(argv[4]) : 20000;
    bool const all = step == "all";
    if (!all && step != "list" && step != "work" && step != "merge" && step != "repair") {
        std::fprintf(stderr,
                     "portfolio_loss FOLDER [list [TASKS SCENARIOS] | work | merge | repair]\n");
        return 2;
    }
    if (scenarios >= most_scenarios) {
        std::fprintf(stderr, "more tasks of fewer than %d scenarios, please\n", most_scenarios);
        return 2;
    }
    if (all || step == "list") list(folder, number, scenarios);
    if (all || step == "work") work(folder);
    if (all || step == "merge") merge(folder);
    if (step == "repair") repair(folder);
}
