// The program orvix: runs a command and turns every error into a message and an exit status: 2 for arguments that
// cannot be used, 1 for work that failed, 128 + the signal when stopped.
#include <exception>
#include <iostream>
#include <new>

#include "host/cli/arguments.h"
#include "host/cli/catalogue.h"
#include "host/cli/describe.h"
#include "host/cli/error.h"
#include "host/cli/render.h"
#include "host/cli/stop_signal.h"

namespace {

void run(const cli::Arguments& arguments) {
    using Command = cli::Arguments::Command;
    if (arguments.command == Command::Help)
        std::cout << arguments.helpText;
    else if (arguments.command == Command::Render) {
        cli::watchStopSignals();
        cli::render(arguments);
    } else if (arguments.command == Command::Devices)
        cli::listDevices();
    else {
        host::Host host;
        cli::Catalogue catalogue(host, arguments.bundles);
        if (arguments.command == Command::List)
            cli::listEffects(catalogue, arguments.list);
        else
            cli::describeEffect(catalogue, arguments.describe);
    }
    if (!std::cout.flush()) throw cli::Failure("cannot write to the standard output");
}

int report(const char* message, int status) {
    std::cerr << "orvix: " << message << '\n';
    return status;
}

} // namespace

int main(int count, char** words) {
    try {
        run(cli::parseArguments({words + 1, words + count}));
        return 0;
    } catch (const cli::Error& error) {
        return report(error.what(), error.status());
    } catch (const std::bad_alloc&) {
        return report("out of memory", 1);
    } catch (const std::exception& error) {
        return report(error.what(), 1);
    }
}
