package kr.vqxml;

import java.lang.ref.Cleaner;
import java.lang.ref.Reference;
import java.nio.charset.Charset;
import java.nio.charset.StandardCharsets;

/**
 * One handle of the library; every family's class is one. Close it (try-with-resources);
 * one that is only dropped is finished when the garbage collector finds it.
 *
 * <p>Threads: as in C, use one handle from one thread at a time and give each thread its
 * own; different handles work in parallel. Calls on one object are serialised, so misuse
 * cannot corrupt memory, but interleaved operations of two threads on one handle still
 * give meaningless results.
 */
public abstract class Handle implements AutoCloseable {
    private static final Cleaner CLEANER = Cleaner.create();
    static final Charset EUC_KR = Charset.forName("EUC-KR");

    /** The native handle, kept apart from the object so that the cleaner can finish it. */
    private static final class Pointer implements Runnable {
        long value;

        @Override
        public void run() {
            if (value != 0)
                Native.finish(value);
            value = 0;
        }
    }

    @FunctionalInterface
    interface Call {
        int apply(long h);
    }

    private final Pointer pointer = new Pointer();
    private final Cleaner.Cleanable cleanable;

    protected Handle() throws VqxmlException {
        long[] out = new long[1];
        int status = Native.init(out);
        if (status != 0)
            throw new VqxmlException(status, "VQTK_XMLAPI_init > the library could not start");
        pointer.value = out[0];
        cleanable = CLEANER.register(this, pointer);
    }

    /** Finishes the handle; the buffers it gave out were copies and stay usable. */
    @Override
    public synchronized void close() {
        cleanable.clean();
    }

    /** The library's version text, e.g. "V1.0.0.7". */
    public synchronized String version() {
        try {
            return new String(Native.version(live()), StandardCharsets.US_ASCII);
        } finally {
            Reference.reachabilityFence(this);
        }
    }

    /** The last failure's text on this handle (kept after later successes). */
    public synchronized String errorText() {
        try {
            return new String(Native.errorText(live()), EUC_KR);
        } finally {
            Reference.reachabilityFence(this);
        }
    }

    private long live() {
        if (pointer.value == 0)
            throw new IllegalStateException("vqxml: the handle is closed");
        return pointer.value;
    }

    /** Runs one C call; a failure becomes a VqxmlException with the handle's text. */
    final void run(Call call) throws VqxmlException {
        runQuiet(call);
    }

    /** As run, for a loader that leaves no text for the statuses in silent. */
    final synchronized void runQuiet(Call call, int... silent) throws VqxmlException {
        try {
            long h = live();
            int status = call.apply(h);
            for (int s : silent)
                if (status == s)
                    throw new VqxmlException(status, "the input cannot be used");
            if (status != 0)
                throw new VqxmlException(status, textOf(status, h));
        } finally {
            // The cleaner must not finish the handle while the call still uses it.
            Reference.reachabilityFence(this);
        }
    }

    /** Runs the call, then copies out the result document (null when there is none). */
    final synchronized byte[] runForDocument(Call call) throws VqxmlException {
        run(call);
        byte[][] out = new byte[1][];
        run(h -> Native.document(h, out));
        return out[0];
    }

    /** The result document of the last operation, a copy (null when there is none). */
    public final byte[] document() throws VqxmlException {
        return runForDocument(h -> 0);
    }

    private static String textOf(int status, long h) {
        // Neither status touches the handle, so its text would be an older one.
        if (status == 10100 || status == 10102)
            return "a required argument is missing";
        return new String(Native.errorText(h), EUC_KR);
    }

    /** A text as the C functions take it; one with a NUL would be cut short there, so it is refused. */
    static byte[] utf8(String text) {
        if (text != null && text.indexOf('\0') >= 0)
            throw new IllegalArgumentException("vqxml: a text with a NUL character");
        return text == null ? null : text.getBytes(StandardCharsets.UTF_8);
    }

    static String utf8(byte[] bytes) {
        return bytes == null ? null : new String(bytes, StandardCharsets.UTF_8);
    }

    /** Issuer, serial and key names come in the code set of the process locale, UTF-8 in "C". */
    static String local(byte[] bytes) {
        if (bytes == null)
            return null;
        String codeset = System.getProperty("sun.jnu.encoding", "UTF-8");
        Charset charset = StandardCharsets.UTF_8;
        if (!codeset.equals("ANSI_X3.4-1968") && Charset.isSupported(codeset))
            charset = Charset.forName(codeset);
        return new String(bytes, charset);
    }
}
