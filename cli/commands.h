/* The commands, one family per file; main.c lists them in its table. */
#ifndef VQXML_CLI_COMMANDS_H
#define VQXML_CLI_COMMANDS_H

#include "cli/cli.h"

extern const CliCommand cliSignCommand;
extern const CliCommand cliVerifyCommand;
extern const CliCommand cliEncryptCommand;
extern const CliCommand cliDecryptCommand;
extern const CliCommand cliSoapSignCommand;
extern const CliCommand cliSoapEncryptCommand;
extern const CliCommand cliSoapProcessCommand;
extern const CliCommand cliEbXmlSignCommand;
extern const CliCommand cliEbXmlVerifyCommand;
extern const CliCommand cliCertVerifyCommand;
extern const CliCommand cliKeyDecryptCommand;
extern const CliCommand cliKeyRandomCommand;
extern const CliCommand cliVersionCommand;

#endif
