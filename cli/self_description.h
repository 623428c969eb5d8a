// cli/self_description.h - the program's own manual page and shell completion, on standard output.
#pragma once

namespace velnor::cli {

void printManPage();     ///< roff, for velnor-cli.1
void printCompletion();  ///< a script for bash

}  // namespace velnor::cli
