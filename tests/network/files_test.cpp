#include "tests/network/nets.h"
#include "tests/support/folder.h"
#include "tests/support/refusal.h"
#include "tests/support/words.h"

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
    // The parts of a net, and what is no such part.
    std::pair<char const*, char const*> const cases[] = {
        {"layers", "2 2|-2 2 1|2 2 2|99999999999 1 1|50000 50000 1|2 2 1 7"},
        {"activ", "2 4|x"},
        {"w1", "2 3 0|2 2 -1|2 2 2 2 1 5 1 1 5|2 2 1 1 1 5 2 1 5"},
        {"b1", "|"},
        {"w2", "1 2 0"},
        {"b2", "1 1"},
    };
    for (auto const& [part, damaged] : cases) {
        std::string const file = std::string("n_") + part + ".nn", good = here.text(file);
        auto refuses = [&](char const* why) {
            EXPECT_REFUSAL_DETAIL(net.load(here.path("n")), "NEURAL_NET", "load(Text)", why,
                                  "plik: " + here.path(file));
        };
        for (std::string const& content : test::split(damaged, '|')) {
            SCOPED_TRACE(here.put(file, content) + ": " + content);
            refuses("nieprawidlowa zawartosc pliku");
        }
        std::filesystem::remove(here.path(file));
        refuses("nieudane otwarcie pliku do odczytu");
        here.put(file, good);
    }
}

} // namespace
} // namespace varnow
