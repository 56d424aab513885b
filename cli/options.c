/* Command-line options: --name VALUE, --name=VALUE, -x VALUE, flags, "--" and
 * --help, described by each command's table so that its help comes from the
 * same place as its parsing. */
#include <string.h>

#include "cli/cli.h"

void cliPrintHelp(const CliCommand* cmd, const CliSyntax* syntax, FILE* out) {
    fprintf(out, "Usage: vqxml %s%s%s\n\n%s\n", cmd->name, *syntax->usage ? " " : "", syntax->usage,
            syntax->description);
    fprintf(out, "\nOptions:\n");
    for (int i = 0; i < syntax->optionCount; ++i) {
        const CliOption* o = &syntax->options[i];
        char left[64];
        int n = o->shortName ? snprintf(left, sizeof left, "-%c, --%s", o->shortName, o->name)
                             : snprintf(left, sizeof left, "    --%s", o->name);
        if (o->valueName != NULL && n > 0 && (size_t)n < sizeof left)
            snprintf(left + n, sizeof left - (size_t)n, " %s", o->valueName);
        fprintf(out, "  %-28s %s\n", left, o->help);
    }
    fprintf(out, "  %-28s %s\n", "-h, --help", "show this help and exit");
    if (syntax->tables != NULL && syntax->tables[0] != NULL)
        fputc('\n', out);
    for (int i = 0; syntax->tables != NULL && syntax->tables[i] != NULL; ++i) {
        fprintf(out, "%s: ", syntax->tables[i]->heading);
        cliPrintAlgorithmNames(syntax->tables[i], out);
        fputc('\n', out);
    }
}

static const CliOption* findLong(const CliSyntax* syntax, const char* name, size_t nameLen) {
    for (int i = 0; i < syntax->optionCount; ++i)
        if (strlen(syntax->options[i].name) == nameLen && strncmp(syntax->options[i].name, name, nameLen) == 0)
            return &syntax->options[i];
    return NULL;
}

static const CliOption* findShort(const CliSyntax* syntax, char name) {
    for (int i = 0; i < syntax->optionCount; ++i)
        if (syntax->options[i].shortName == name)
            return &syntax->options[i];
    return NULL;
}

/* Stores value (NULL for a flag) into the option's target. */
static int store(const CliOption* o, const char* value) {
    switch (o->kind) {
    case CLI_FLAG:
        *(int*)o->target = 1;
        return 0;
    case CLI_VALUE:
        *(const char**)o->target = value;
        return 0;
    case CLI_LIST: {
        CliList* list = o->target;
        if (list->count == CLI_MAX_LIST)
            return cliUsageError("--%s given more than %d times", o->name, CLI_MAX_LIST);
        list->items[list->count++] = value;
        return 0;
    }
    }
    return 0;
}

/* Handles argv[*i], an option; may consume the next argument as its value. */
static int parseOption(const CliSyntax* syntax, int argc, char** argv, int* i) {
    const char* arg = argv[*i];
    const CliOption* o;
    const char* inlineValue = NULL;
    if (arg[1] == '-') {
        const char* name = arg + 2;
        const char* eq = strchr(name, '=');
        o = findLong(syntax, name, eq ? (size_t)(eq - name) : strlen(name));
        inlineValue = eq ? eq + 1 : NULL;
    } else {
        o = arg[2] == '\0' ? findShort(syntax, arg[1]) : NULL;
    }
    if (o == NULL)
        return cliUsageError("unknown option '%s'", arg);
    if (o->kind == CLI_FLAG) {
        if (inlineValue != NULL)
            return cliUsageError("--%s takes no value", o->name);
        return store(o, NULL);
    }
    if (inlineValue == NULL) {
        if (*i + 1 >= argc)
            return cliUsageError("--%s needs a value (%s)", o->name, o->valueName);
        inlineValue = argv[++*i];
    }
    return store(o, inlineValue);
}

/* As cliParse, returning 0, -1 (help shown) or CLI_EXIT_USAGE. */
static int parse(const CliCommand* cmd, const CliSyntax* syntax, int argc, char** argv, CliParsed* parsed) {
    int count = 0;
    int optionsEnded = 0;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        if (!optionsEnded && (strcmp(arg, "-h") == 0 || strcmp(arg, "--help") == 0)) {
            cliPrintHelp(cmd, syntax, stdout);
            return -1;
        }
        if (!optionsEnded && strcmp(arg, "--") == 0) {
            optionsEnded = 1;
        } else if (!optionsEnded && arg[0] == '-' && arg[1] != '\0') {
            int rc = parseOption(syntax, argc, argv, &i);
            if (rc != 0)
                return rc;
        } else {
            if (count == syntax->maxPositional)
                return cliUsageError("unexpected argument '%s'", arg);
            parsed->positional[count++] = arg;
        }
    }
    if (count < syntax->minPositional)
        return cliUsageError("missing argument");
    parsed->count = count;
    return 0;
}

int cliParse(const CliCommand* cmd, const CliSyntax* syntax, int argc, char** argv, CliParsed* parsed) {
    for (int i = 0; i < CLI_MAX_POSITIONAL; ++i)
        parsed->positional[i] = "-";
    parsed->count = 0;
    int rc = parse(cmd, syntax, argc, argv, parsed);
    parsed->exitCode = rc < 0 ? 0 : rc;
    return rc == 0;
}
