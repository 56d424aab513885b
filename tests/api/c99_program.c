/* A plain C99 program against the installed library: handles, version, errors. */
#include <stdio.h>
#include <string.h>

#include <vqxml/vqxml.h>

int main(void) {
    void* handle = NULL;
    char version[16];
    char error[64];
    if (VQTK_XMLAPI_init(&handle) != VQXML_OK)
        return 1;
    if (VQTK_XMLAPI_GetVersion(handle, (int)sizeof version, version) != VQXML_OK || strcmp(version, "V1.0.0.7") != 0)
        return 2;
    if (VQTK_XMLAPI_GetErrInfo(handle, (int)sizeof error, error) != VQXML_OK || error[0] != '\0')
        return 3;
    if (VQTK_XMLAPI_Finish(&handle) != VQXML_OK)
        return 4;
    if (VQTK_XMLAPI_GetErrInfo(NULL, (int)sizeof error, error) != VQXML_ERR_NULL_HANDLE)
        return 5;
    printf("%s\n", version);
    return 0;
}
