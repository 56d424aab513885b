/* Finding the encrypted key made for a recipient among several. */
#include <string.h>

#include <vqxml/vqxml.h>

#include "cli/cli.h"

/* More encrypted keys than this in one document are not walked. */
enum { MAX_RECIPIENTS = 64 };

static int isOtherRecipient(const CliRecipientWalk* walk, int status) {
    for (int i = 0; i < 3; ++i)
        if (status == walk->otherRecipient[i])
            return 1;
    return 0;
}

int cliUnwrapForRecipient(void* h, const CliRecipientWalk* walk, const CliSigner* recipient) {
    int status = VQXML_OK;
    for (int walked = 0; walked < MAX_RECIPIENTS; ++walked) {
        status = walk->unwrap(h, recipient->cert.data, (int)recipient->cert.len, recipient->key, recipient->keyLen);
        if (!isOtherRecipient(walk, status))
            break;
        CliKeyInfo before = cliCopyKeyInfo(walk->read(h));
        int next = walk->next(h);
        CliKeyInfo after = walk->read(h);
        int moved = next == VQXML_OK && after.serial != NULL &&
                    (before.serial == NULL || strcmp(before.serial, after.serial) != 0);
        cliFreeKeyInfo(&before);
        if (next != VQXML_OK)
            status = next;
        if (!moved)
            break;
    }
    return status ? cliLibraryFailure(h, status) : 0;
}
