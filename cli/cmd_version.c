/* version: the library's version text. */
#include <vqxml/vqxml.h>

#include "cli/cli.h"
#include "cli/commands.h"

static int runVersion(const CliCommand* cmd, int argc, char** argv) {
    const CliSyntax syntax = {"", "Prints the library's version.", NULL, NULL, 0, 0, 0};
    CliParsed args;
    if (!cliParse(cmd, &syntax, argc, argv, &args))
        return args.exitCode;
    void* h = NULL;
    int rc = cliOpenHandle(&h);
    if (rc != 0)
        return rc;
    char version[32] = "";
    int status = VQTK_XMLAPI_GetVersion(h, (int)sizeof version, version);
    rc = status ? cliLibraryFailure(h, status) : 0;
    if (rc == 0)
        printf("%s\n", version);
    cliCloseHandle(&h);
    return rc;
}

const CliCommand cliVersionCommand = {"version", "print the library's version", runVersion};
