// vorund_benchmarks: CPU time per pixel of every stage and of the whole, of the library and of its
// plain version, over settings and sizes. The names are STAGE/WHO/SETTINGS/SIDE.
#include <benchmark/benchmark.h>

#include "stage.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    vorund::bench::beQuietAndSingleThreaded();
    vorund::bench::addImageStages();
    vorund::bench::addSeedStages();
    vorund::bench::addRoomStages();
    vorund::bench::addWholeFlow();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
