// damage-film FILM SEED DAMAGED: writes the film with faults; the same ones for the same film and
// seed.
#include "Fuzz/FilmDamage.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: damage-film FILM SEED DAMAGED\n", stderr);
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const stillwick::Bytes film{std::istreambuf_iterator<char>(in), {}};
    if (!in.good() && !in.eof()) {
        std::perror(argv[1]);
        return 1;
    }
    const auto seed = std::uint32_t(std::strtoul(argv[2], nullptr, 10));
    const stillwick::Bytes damaged = stillwick::damagedFilm(film, 2 * film.size() + 4096, seed);
    std::ofstream out(argv[3], std::ios::binary);
    out.write(reinterpret_cast<const char*>(damaged.data()), std::streamsize(damaged.size()));
    out.close();
    if (!out) {
        std::perror(argv[3]);
        return 1;
    }
    return 0;
}
