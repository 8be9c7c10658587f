#include "platform/machine.h"
#include "runtime/process.h"

int main() {
    const auto platform = quil::machinePlatform();
    return quil::runProcess(*platform);
}
