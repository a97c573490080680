#include "support/row.h"

int main(int count, char** arguments) {
    bench::addRows();
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
