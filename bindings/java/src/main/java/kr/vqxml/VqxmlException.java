package kr.vqxml;

/**
 * A call of the library failed: {@link #status()} is its status code (the list is
 * in vqxml.h and docs/status-codes.md), the message the library's text for it
 * ("Method &gt; reason"), decoded from EUC-KR.
 */
public class VqxmlException extends Exception {
    private static final long serialVersionUID = 1L;

    /** The signature does not verify (any other status: it could not be checked). */
    public static final int NOT_VERIFIED = 11213;

    private final int status;

    public VqxmlException(int status, String message) {
        super(message + " (status " + status + ")");
        this.status = status;
    }

    public int status() {
        return status;
    }
}
