/* The library's story told through its C interface, one capability at a time. */
#include <stdio.h>
#include <string.h>

#include <vqxml/vqxml.h>

/* Prints one step and returns 1 if its status was not the expected one. */
static int expect(const char* what, int status, int expected) {
    if (status == expected)
        printf("  %-50s ok (%d)\n", what, status);
    else
        printf("  %-50s FAILED: %d, expected %d\n", what, status, expected);
    return status == expected ? 0 : 1;
}

static int showHandleLife(void) {
    void* handle = NULL;
    void* second = NULL;
    char version[16] = "";
    char error[256] = "";
    int failures = 0;

    printf("Handles and errors\n");
    failures += expect("create a handle (the engines start)", VQTK_XMLAPI_init(&handle), VQXML_OK);
    failures += expect("read the version", VQTK_XMLAPI_GetVersion(handle, (int)sizeof version, version), VQXML_OK);
    printf("    version: %s\n", version);
    failures += expect("a second handle shares the engines", VQTK_XMLAPI_init(&second), VQXML_OK);
    failures += expect("a handle variable in use is refused", VQTK_XMLAPI_init(&handle), VQXML_ERR_HANDLE_IN_USE);
    failures += expect("a null handle reports a fixed text",
                       VQTK_XMLAPI_GetErrInfo(NULL, (int)sizeof error, error), VQXML_ERR_NULL_HANDLE);
    printf("    text: %zu bytes of EUC-KR\n", strlen(error));
    failures += expect("finish the second handle", VQTK_XMLAPI_Finish(&second), VQXML_OK);
    failures += expect("finish the first handle (the engines stop)", VQTK_XMLAPI_Finish(&handle), VQXML_OK);
    return failures;
}

int main(void) {
    int failures = showHandleLife();
    if (failures == 0)
        printf("demo passed: every step ok\n");
    else
        printf("demo FAILED: %d step(s) failed\n", failures);
    return failures == 0 ? 0 : 1;
}
