import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.Catalogue;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.IOException;
import java.lang.reflect.Array;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Comparator;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Set;
import java.util.stream.Collectors;

/**
 * Writes, at build time, what the kit tells its users about each native: every native of the
 * app's MmiNativeManager is called once against a healthy simulated device (which operations it
 * reaches, what it answers), once with the services released (its failure value) and once with
 * the services that have a 1.1 version offering 1.0 only (whether it needs 1.1). What the device
 * answers and accepts comes from its catalogue. Nothing here restates the library's own tables.
 *
 *   java NativeTable OVERVIEW_HTML
 */
public final class NativeTable {
    private static final String MANAGER = "com.tavrin.mmitest.controller.MmiNativeManager";
    private static final long WAIT_MS = 10_000;

    private record Run(Object result, List<Call> calls) {}

    public static void main(String[] args) throws Exception {
        if (args.length != 1) {
            System.err.println("usage: NativeTable OVERVIEW_HTML");
            System.exit(2);
        }
        SimulatedDevice.captureLogs();
        SimulatedDevice.start();
        Class<?> manager = Class.forName(MANAGER);
        settle();
        Catalogue catalogue = SimulatedDevice.catalogue();
        List<Method> natives = Arrays.stream(manager.getDeclaredMethods())
                .filter(m -> Modifier.isNative(m.getModifiers())).sorted(Comparator.comparing(Method::getName)).toList();

        List<Run> healthy = new ArrayList<>();
        for (Method m : natives) {
            healthy.add(run(m));
        }
        String dead = catalogue.serviceNames().get(0);
        SimulatedDevice.kill(dead);
        settle();
        List<Run> failing = new ArrayList<>();
        for (Method m : natives) {
            failing.add(run(m));
        }
        SimulatedDevice.reset();
        List<String> older = catalogue.services().stream().filter(Catalogue.Service::hasV11).map(Catalogue.Service::name).toList();
        for (String service : older) {
            SimulatedDevice.setOnlyV10(service, true);
            SimulatedDevice.kill(service);
            SimulatedDevice.revive(service);
        }
        settle();
        List<Run> oldDevice = new ArrayList<>();
        for (Method m : natives) {
            oldDevice.add(run(m));
        }

        StringBuilder html = new StringBuilder();
        html.append("<!DOCTYPE html>\n<html lang=\"en\"><head><title>Natives and the simulated device</title></head><body>\n")
                .append("<p>The natives of <code>MmiNativeManager</code> and what they do on the simulated device, ")
                .append("measured when the kit was built: each native called once (integers 1, texts \"1\", ")
                .append("arrays of one element) against the healthy device, once with every service released, ")
                .append("and once with ").append(esc(String.join(", ", older))).append(" offering version 1.0 only.</p>\n")
                .append("<table class=\"striped\"><caption>Every native</caption>\n<thead><tr>")
                .append("<th scope=\"col\">Native</th><th scope=\"col\">Calls (program with <code>answer</code>)</th>")
                .append("<th scope=\"col\">Healthy answer</th><th scope=\"col\">Failure value</th>")
                .append("<th scope=\"col\">Needs 1.1</th></tr></thead>\n<tbody>\n");
        for (int i = 0; i < natives.size(); i++) {
            Run h = healthy.get(i);
            Set<String> reached = operations(h.calls());
            boolean needsV11 = !reached.isEmpty() && !operations(oldDevice.get(i).calls()).containsAll(reached);
            html.append("<tr><th scope=\"row\"><code>").append(esc(signature(natives.get(i)))).append("</code></th><td>")
                    .append(reached.isEmpty() ? "none" : reached.stream().map(o -> "<code>" + esc(o) + "</code>")
                            .collect(Collectors.joining("<br>")))
                    .append("</td><td><code>").append(esc(show(h.result()))).append("</code></td><td><code>")
                    .append(esc(show(failing.get(i).result()))).append("</code></td><td>")
                    .append(needsV11 ? "yes" : "no").append("</td></tr>\n");
        }
        html.append("</tbody></table>\n");

        html.append("<table class=\"striped\"><caption>Every operation: what it answers</caption>\n<thead><tr>")
                .append("<th scope=\"col\">Operation</th><th scope=\"col\">Answer shape</th>")
                .append("<th scope=\"col\">Healthy answer</th><th scope=\"col\">Keywords it takes</th></tr></thead>\n<tbody>\n");
        for (Catalogue.Service s : catalogue.services()) {
            for (Catalogue.Operation o : s.operations()) {
                html.append("<tr><th scope=\"row\"><code>").append(esc(s.name() + "." + o.name())).append("</code></th><td>")
                        .append(esc(o.shape())).append("</td><td><code>").append(esc(o.healthyAnswer())).append("</code>");
                o.healthyAnswerByKey().forEach((key, answer) -> html.append("<br>for ").append(key).append(": <code>")
                        .append(esc(answer)).append("</code>"));
                html.append("</td><td>").append(esc(catalogue.keywordsFor(o).stream().map(Catalogue.Keyword::word)
                        .collect(Collectors.joining(", ")))).append("</td></tr>\n");
            }
        }
        html.append("</tbody></table>\n");

        html.append("<table class=\"striped\"><caption>Answer forms</caption>\n<thead><tr><th scope=\"col\">Form</th>")
                .append("<th scope=\"col\">Example</th><th scope=\"col\">Meaning</th></tr></thead>\n<tbody>\n");
        for (Catalogue.Keyword k : catalogue.keywords()) {
            html.append("<tr><th scope=\"row\">keyword</th><td><code>").append(esc(k.word())).append("</code></td><td>")
                    .append(esc(k.meaning())).append(k.callbackOnly() ? " (callback operations only)" : "").append("</td></tr>\n");
        }
        for (Catalogue.Form f : catalogue.forms()) {
            html.append("<tr><th scope=\"row\">").append(esc(f.form())).append("</th><td><code>").append(esc(f.example()))
                    .append("</code></td><td>").append(esc(f.meaning())).append("</td></tr>\n");
        }
        html.append("</tbody></table>\n</body></html>\n");
        write(Path.of(args[0]), html.toString());
        System.exit(0);  // the library's threads would keep the JVM
    }

    private static Run run(Method m) throws IllegalAccessException, InvocationTargetException {
        SimulatedDevice.takeCallRecords();
        Object[] args = Arrays.stream(m.getParameterTypes()).map(NativeTable::sample).toArray();
        Object result = m.invoke(null, args);
        settle();
        return new Run(result, SimulatedDevice.takeCallRecords());
    }

    private static Object sample(Class<?> type) {
        if (type == int.class) {
            return 1;
        }
        if (type == boolean.class) {
            return true;
        }
        if (type == String.class) {
            return "1";
        }
        if (type.isArray()) {
            Object array = Array.newInstance(type.getComponentType(), 1);
            Array.set(array, 0, sample(type.getComponentType()));
            return array;
        }
        if (type == byte.class) {
            return (byte) 1;
        }
        try {
            return type.getConstructor().newInstance();
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException("no sample argument of " + type.getName(), e);
        }
    }

    private static Set<String> operations(List<Call> calls) {
        return calls.stream().map(c -> c.service() + "." + c.operation()).collect(Collectors.toCollection(LinkedHashSet::new));
    }

    /** The same form as the kit's own messages: {@code "int setLightBrightnessNative(int, int)"}. */
    private static String signature(Method method) {
        return method.getReturnType().getTypeName() + " " + method.getName()
                + Arrays.stream(method.getParameterTypes()).map(Class::getTypeName).collect(Collectors.joining(", ", "(", ")"));
    }

    private static String show(Object value) {
        if (value instanceof String s) {
            return Call.show(s);
        }
        if (value instanceof int[] a) {
            return Arrays.toString(a);
        }
        return String.valueOf(value);
    }

    private static void settle() {
        if (!SimulatedDevice.waitIdle(WAIT_MS)) {
            throw new IllegalStateException("the library did not settle within " + WAIT_MS / 1000 + " s; waiting for "
                    + SimulatedDevice.waitingFor());
        }
    }

    private static String esc(String text) {
        return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace("\"", "&quot;");
    }

    private static void write(Path path, String text) throws IOException {
        Path tmp = path.resolveSibling(path.getFileName() + ".tmp");
        Files.writeString(tmp, text, StandardCharsets.UTF_8);
        Files.move(tmp, path, StandardCopyOption.REPLACE_EXISTING, StandardCopyOption.ATOMIC_MOVE);
    }
}
