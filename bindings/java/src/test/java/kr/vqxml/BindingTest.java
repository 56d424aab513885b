package kr.vqxml;

import static java.nio.charset.StandardCharsets.ISO_8859_1;
import static java.nio.charset.StandardCharsets.UTF_8;
import static org.junit.jupiter.api.Assertions.*;

import java.io.IOException;
import java.lang.reflect.*;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

/** The cases every binding shares (bindings/cases.tsv, whose head tells how they read), and what
 * is Java's own: copies across JNI freed, handles on many threads and handles left to the cleaner. */
class BindingTest {
    static final Map<String, Class<?>> REFUSALS =
        Map.of("arg", IllegalArgumentException.class, "closed", IllegalStateException.class);
    static final Map<String, List<String[]>> CASES = new LinkedHashMap<>();
    static final Map<String, byte[]> READ = new ConcurrentHashMap<>();

    static {
        System.load(System.getProperty("vqxml.test.malloc"));
        Path table = Paths.get(System.getProperty("vqxml.cases", "bindings/cases.tsv"));
        List<String[]> current = null;
        try {
            for (String line : Files.readAllLines(table, UTF_8)) {
                String[] f = line.split("\t");
                if (f[0].equals("case"))
                    CASES.put(f[1], current = new ArrayList<>(List.<String[]>of(f)));
                else if (!line.isEmpty() && !line.startsWith("#"))
                    current.add(f);
            }
        } catch (IOException e) {
            CASES.put("test input missing: " + table, null);
        }
    }

    static Set<String> sharedCases() {
        return CASES.keySet();
    }

    @ParameterizedTest
    @MethodSource("sharedCases")
    void sharedCase(String id) throws Exception {
        run(id);
    }

    static void run(String id) throws Exception {
        List<String[]> steps = CASES.get(id);
        assertNotNull(steps, "no case " + id);
        Map<String, Object> values = new HashMap<>();
        try {
            for (String[] handle : Arrays.stream(steps.get(0)).skip(2).map(h -> h.split("=")).toArray(String[][]::new))
                values.put(handle[0], Class.forName("kr.vqxml." + handle[1]).getConstructor().newInstance());
            for (String[] step : steps.subList(1, steps.size()))
                step(step, values);
        } finally {
            for (Object value : values.values())
                if (value instanceof Handle handle)
                    handle.close();
        }
    }

    static void step(String[] f, Map<String, Object> values) throws Exception {
        int at = 2;
        while (at < f.length && !List.of("=>", "==", "~~", "!~", "!!").contains(f[at]))
            ++at;
        String check = at < f.length ? f[at] : "", where = String.join(" ", f);
        Object result;
        try {
            result = call(f, at, values);
        } catch (InvocationTargetException e) {
            if (!check.equals("!!"))
                throw new AssertionError(where, e.getCause());
            String text = f.length > at + 2 ? f[at + 2] : "";
            assertTrue(refusedAs(e.getCause(), f[at + 1], text), where + ": " + e.getCause());
            return;
        }
        assertNotEquals("!!", check, where + ": succeeded");
        if (check.equals("=>"))
            values.put(f[at + 1], result);
        else if (!check.isEmpty()) {
            String actual = norm(result), wanted = norm(arg(f[at + 1], String.class, values));
            boolean holds = check.equals("==") ? wanted.equals(actual) : actual.contains(wanted) == check.equals("~~");
            assertTrue(holds, where + " (was " + actual + ")");
        }
    }

    static Object call(String[] f, int at, Map<String, Object> values) throws Exception {
        if (f[0].equals("-")) {  // replace or concat, on the bytes
            String[] p = new String[at - 2];
            for (int i = 0; i < p.length; ++i)
                p[i] = norm(arg(f[i + 2], byte[].class, values));
            assertTrue(f[1].equals("concat") || p[0].contains(p[1]), String.join(" ", f));
            return (f[1].equals("concat") ? String.join("", p) : p[0].replace(p[1], p[2])).getBytes(ISO_8859_1);
        }
        Object target = values.get(f[0]);
        Method m = Arrays.stream(target.getClass().getMethods())
            .filter(c -> c.getName().equalsIgnoreCase(f[1].replace("_", "")) && c.getParameterCount() == at - 2)
            .findAny().orElseThrow(() -> new AssertionError("no method " + String.join(" ", f)));
        Object[] args = new Object[at - 2];
        for (int i = 0; i < args.length; ++i)
            args[i] = arg(f[i + 2], m.getParameterTypes()[i], values);
        return m.invoke(target, args);
    }

    /** Whether e is the binding's own refusal named, or the library's status with its text. */
    static boolean refusedAs(Throwable e, String status, String text) throws Exception {
        if (REFUSALS.containsKey(status))
            return REFUSALS.get(status).isInstance(e);
        int wanted = status.matches("\\d+") ? Integer.parseInt(status)
                                             : VqxmlException.class.getField(status).getInt(null);
        return e instanceof VqxmlException x && x.status() == wanted && x.getMessage().contains(text)
            && (x.getMessage().contains(" > ") || wanted == 10104);
    }

    static Object arg(String a, Class<?> type, Map<String, Object> values) throws Exception {
        String name = a.substring(a.startsWith("@") ? 1 : a.indexOf('.') + 1);
        if (a.equals("null"))
            return null;
        if (a.startsWith("@"))
            return values.containsKey(name) ? values.get(name) : READ.computeIfAbsent(name, BindingTest::data);
        if (a.matches("[A-Z]\\w*\\.[A-Z][A-Z0-9_]*"))
            return type.isEnum() ? Arrays.stream(type.getEnumConstants()).filter(c -> ((Enum<?>) c).name().equals(name))
                                         .findAny().get()
                                 : Class.forName("kr.vqxml." + a.substring(0, a.indexOf('.'))).getField(name).get(null);
        String text = a.replace("\\r", "\r").replace("\\n", "\n").replace("\\0", "\0").replaceFirst("^b:", "");
        return type == byte[].class ? text.getBytes(UTF_8) : text;
    }

    static byte[] data(String name) {
        Path path = Paths.get(System.getProperty("vqxml.testdata", "tests/data"), name);
        try {
            return Files.readAllBytes(path);
        } catch (IOException e) {
            throw new AssertionError("test input missing: " + path, e);
        }
    }

    /** Any result or expectation as the bytes it stands for, one character each. */
    static String norm(Object value) {
        if (value instanceof byte[] bytes)
            return new String(bytes, ISO_8859_1);
        if (value instanceof List<?> list)
            value = String.join(" ", list.toArray(new String[0]));
        return new String(String.valueOf(value).getBytes(UTF_8), ISO_8859_1);
    }

    /** What the process holds from malloc (src/test/c/malloc_bytes.c). */
    static native long mallocBytes();

    /**
     * Every copy across the boundary is freed: over rounds of the signature and encryption cases,
     * malloc does not grow in every stretch of 50 rounds, as a leak of even one input per round
     * would make it (the JVM's own use comes and goes).
     */
    @Test
    void roundsAcrossTheBoundaryLeaveNothingBehind() throws Exception {
        long least = Long.MAX_VALUE, mark = 0;
        try (Certificates keeper = new Certificates()) {  // so that the engines stay up
            for (int round = 0; round <= 400; ++round) {
                if (round % 50 == 0 && round >= 100) {
                    long now = mallocBytes();
                    least = round > 100 ? Math.min(least, now - mark) : least;
                    mark = now;
                }
                run("tax_invoice");
                run("encrypted_for_one_recipient");
            }
        }
        assertTrue(least < 64 << 10, "malloc grew by at least " + least + " bytes in every 50 rounds");
    }

    @Test
    void casesOnManyThreadsAndHandlesLeftToTheCleaner() throws Exception {
        Callable<Void> signing = () -> {
            run("tax_invoice");
            return null;
        };
        ExecutorService pool = Executors.newFixedThreadPool(8);
        for (Future<Void> done : pool.invokeAll(Collections.nCopies(200, signing)))
            done.get();
        pool.shutdown();
        try (Certificates keeper = new Certificates()) {  // so that the engines stay up
            for (int i = 0; i < 5000; ++i) {
                run("fresh_handles");
                new Certificates().version();
            }
        }
    }
}
