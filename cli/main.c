/* vqxml: the library's operations from the command line.
 *   vqxml COMMAND [options] [files]    vqxml COMMAND --help    vqxml --help */
#include <locale.h>
#include <string.h>

#include "cli/cli.h"
#include "cli/commands.h"

/* A family's commands join this table when the family is part of the library. */
static const CliCommand* const kCommands[] = {
    &cliSignCommand,       &cliVerifyCommand,                                  /* XML Signature */
    &cliEncryptCommand,    &cliDecryptCommand,                                 /* XML Encryption */
    &cliSoapSignCommand,   &cliSoapEncryptCommand, &cliSoapProcessCommand,     /* WS-Security */
    &cliEbXmlSignCommand,  &cliEbXmlVerifyCommand,                             /* ebXML */
    &cliCertVerifyCommand, &cliKeyDecryptCommand,  &cliKeyRandomCommand,       /* PKI */
    &cliVersionCommand,
};
static const int kCommandCount = (int)(sizeof kCommands / sizeof kCommands[0]);

static void printOverview(FILE* out) {
    fprintf(out, "Usage: vqxml COMMAND [options] [files]\n\n"
                 "XML Signature, XML Encryption, WS-Security and ebXML through the vqxml library.\n\n"
                 "Commands:\n");
    for (int i = 0; i < kCommandCount; ++i)
        fprintf(out, "  %-14s %s\n", kCommands[i]->name, kCommands[i]->summary);
    fprintf(out, "\n'vqxml COMMAND --help' describes a command. Files are read whole; '-' or a\n"
                 "missing input is stdin, a missing -o is stdout. Keys and certificates are DER\n"
                 "or PEM. On failure the library's message goes to stderr and its status code,\n"
                 "folded into 0-255, is the exit code:\n"
                 "  0 success; 1-63 engine errors (as they are); 101xx -> 100+xx,\n"
                 "  102xx -> 120+xx, 103xx -> 140+xx, 104xx -> 160+xx, 105xx -> 180+xx;\n"
                 "  11xxx and 12xxx -> 200+xx (11213 invalid signature -> 213, 12011 -> 211);\n"
                 "  64 bad arguments, 65 bad input data, 66 unreadable input, 73 unwritable output.\n");
}

static const CliCommand* findCommand(const char* name) {
    for (int i = 0; i < kCommandCount; ++i)
        if (strcmp(kCommands[i]->name, name) == 0)
            return kCommands[i];
    return NULL;
}

int main(int argc, char** argv) {
    /* The library gives names in the locale's code set; messages are converted to it. */
    setlocale(LC_ALL, "");
    if (argc < 2) {
        printOverview(stderr);
        return CLI_EXIT_USAGE;
    }
    const char* name = argv[1];
    if (strcmp(name, "--help") == 0 || strcmp(name, "-h") == 0 || strcmp(name, "help") == 0) {
        if (argc > 2 && findCommand(argv[2]) != NULL) {
            char* helpArgv[] = {argv[2], "--help", NULL};
            return findCommand(argv[2])->run(findCommand(argv[2]), 2, helpArgv);
        }
        printOverview(stdout);
        return 0;
    }
    if (strcmp(name, "--version") == 0)
        name = "version";
    const CliCommand* cmd = findCommand(name);
    if (cmd == NULL) {
        fprintf(stderr, "vqxml: unknown command '%s'\n\n", name);
        printOverview(stderr);
        return CLI_EXIT_USAGE;
    }
    cliSetCommand(cmd);
    return cmd->run(cmd, argc - 1, argv + 1);
}
