/* For the Java binding's tests: the bytes the process holds from malloc, so that a test can
 * tell whether rounds across the JNI boundary leave any behind. */
#include <jni.h>
#include <malloc.h>

JNIEXPORT jlong JNICALL Java_kr_vqxml_BindingTest_mallocBytes(JNIEnv* env, jclass cls) {
    (void)env, (void)cls;
    struct mallinfo2 info = mallinfo2();
    return (jlong)(info.uordblks + info.hblkhd);
}
