// Program vorn-generate: prints a network file of any size to standard output.
//
//   vorn-generate KIND SIZE [--seed N] [--noise FACTOR] [--shuffled] [--truth]
//
// Exit status 0; 2 for a wrong call; 3 when standard output could not be written.

#include <stdio.h>
#include <stdlib.h>

#include <cmath>
#include <map>
#include <string>

#include <CLI/CLI.hpp>

#include "networks.h"

namespace {

using networks::Network;
using networks::Recipe;

const std::map<std::string, Network (*)(const Recipe &)> kinds = {{"levelling", networks::levelling},
                                                                  {"chain", networks::chain},
                                                                  {"plane", networks::plane},
                                                                  {"hall", networks::hall}};

std::string factor(const std::string &text)
{
    const double value = strtod(text.c_str(), nullptr);
    return std::isfinite(value) && value >= 0.0 ? "" : text + " is not a finite number from 0 upwards";
}

struct Call {
    std::string kind;
    Recipe recipe;
    bool truth = false;
};

void describe(CLI::App &app, Call &call)
{
    app.add_option("KIND", call.kind,
                   "levelling: heights in a grid; chain: heights in a line; plane: stations in a grid; hall: targets "
                   "on walls, in space")
        ->required()
        ->check(CLI::IsMember(kinds));
    app.add_option("SIZE", call.recipe.size, "points of levelling and chain, stations of plane, targets of hall")
        ->required()
        ->check(CLI::Range(networks::smallest, networks::largest));
    app.add_option("--seed", call.recipe.seed, "another seed gives another network (default 1)");
    app.add_option("--noise", call.recipe.noise,
                   "errors of the observations in units of their standard deviations (default 1)")
        ->check(factor);
    app.add_flag("--shuffled", call.recipe.shuffled, "points of levelling and chain in random order");
    app.add_flag("--truth", call.truth, "print the true coordinates of the same network instead");
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app("Prints a network file made up from known geometry");
    Call call;
    describe(app, call);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        return app.exit(e) == 0 ? 0 : 2;
    }

    const Network network = kinds.at(call.kind)(call.recipe);
    if (call.truth)
        networks::write_truth(stdout, network);
    else
        networks::write_file(stdout, network);
    if (fflush(stdout) == 0 && !ferror(stdout)) return 0;
    perror("vorn-generate: standard output");
    return 3;
}
