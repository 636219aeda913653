#include "tests/network/nets.h"
#include "tests/support/folder.h"
#include "tests/support/refusal.h"

#include <cmath>

namespace varnow {
namespace {

TEST(NeuralNetFiles, HoldTheNetToSixDigits)
{
    folder const here;
    Text const name = here.path("score");
    neural_net net(2, 3, 2, 1);
    net.init_single_input(2, 2, 2, 1.0);
    net.w1[1] = -1.0 / 3.0;
    net.w1[2] = 2e-9;
    net.b2[1] = 0.0;
    net.save(name);
    EXPECT_EQ(here.names(),
              (std::vector<std::string>{"score_activ.nn", "score_b1.nn", "score_b2.nn",
                                        "score_layers.nn", "score_w1.nn", "score_w2.nn"}));
    EXPECT_EQ(here.text("score_layers.nn"), "2 3 1\n");
    EXPECT_EQ(here.text("score_activ.nn"), "2 1\n");
    EXPECT_EQ(here.text("score_w1.nn"), "2 3 2\n2 2 -0.333333\n2 3 2e-09\n");
    EXPECT_EQ(here.text("score_b2.nn"), "1 1 1\n1 1 0\n");

    neural_net other(5, 5, 3, 3);
    other.set_patterns("1 2; 3 4; 0 7", "1; 0; 0", 0);
    other.load(name);
    net.set_patterns("1 2; 3 4; 0 7", "1; 0; 0", 0);
    EXPECT_EQ(other.act_out, 1);
    EXPECT_EQ(other.gw1.nnz, 2);
    for (int p = 1; p <= 3; ++p) EXPECT_NEAR(other.values(0)(p), net.values(0)(p), 1e-5);
}

TEST(NeuralNetFilesDeathTest, AreRefusedByName)
{
    folder const here;
    neural_net net(2, 2, 2, 3);
    net.init(1.0);
    net.save(here.path("n"));
    neural_net bare(2, 2, 2, 3);
    EXPECT_REFUSAL(bare.save(here.path("x")), "NEURAL_NET", "save(Text)",
                   "niezgodne wymiary macierzy wag");
    EXPECT_REFUSAL_DETAIL(net.save(here.path("none/x")), "NEURAL_NET", "save(Text)",
                          "nieudane otwarcie pliku do zapisu",
                          "plik: " + here.path("none/x_layers.nn"));
    struct
    {
        char const *ending, *content;
    } const rows[] = {
        {"_layers.nn", "2 2\n"},
        {"_layers.nn", "-2 2 1\n"},
        {"_layers.nn", "2 2 2\n"},
        {"_layers.nn", "99999999999 1 1\n"},
        {"_layers.nn", "50000 50000 1\n"},
        {"_layers.nn", "2 2 1 7\n"},
        {"_activ.nn", "2 4\n"},
        {"_activ.nn", "x\n"},
        {"_w1.nn", "2 3 0\n"},
        {"_w1.nn", "2 2 -1\n"},
        {"_w1.nn", "2 2 2\n2 1 5\n1 1 5\n"},
        {"_w1.nn", "2 2 1\n1 1 5\n2 1 5\n"},
        {"_b1.nn", ""},
        {"_w2.nn", "1 2 0\n"},
        {"_b2.nn", "1 1\n"},
    };
    for (auto const& row : rows) {
        std::string const file = std::string("n") + row.ending, good = here.text(file);
        here.put(file, row.content);
        EXPECT_REFUSAL_DETAIL(net.load(here.path("n")), "NEURAL_NET", "load(Text)",
                              "nieprawidlowa zawartosc pliku", "plik: " + here.path(file))
            << row.content;
        here.put(file, good);
    }
    for (char const* ending : {"_layers.nn", "_activ.nn", "_w1.nn", "_b1.nn", "_w2.nn", "_b2.nn"}) {
        std::string const file = std::string("n") + ending, good = here.text(file);
        std::filesystem::remove(here.path(file));
        EXPECT_REFUSAL_DETAIL(net.load(here.path("n")), "NEURAL_NET", "load(Text)",
                              "nieudane otwarcie pliku do odczytu", "plik: " + here.path(file));
        here.put(file, good);
    }
}

} // namespace
} // namespace varnow
