package com.tavrin.mmitest.console;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.lang.reflect.Parameter;
import java.util.Arrays;
import java.util.Comparator;
import java.util.List;
import java.util.stream.Collectors;

/**
 * The native methods of MmiNativeManager, reached by name. Looking them up does not initialise
 * the class, so nothing here loads the library until {@link #load()} is called: the simulated
 * device must be running by then.
 */
final class Natives {
    private Natives() {}

    static List<Method> all() {
        return Arrays.stream(MmiNativeManager.class.getDeclaredMethods())
                .filter(m -> Modifier.isNative(m.getModifiers())).sorted(Comparator.comparing(Method::getName))
                .toList();
    }

    static Method find(String name) {
        return all().stream().filter(m -> m.getName().equals(name)).findFirst().orElseThrow(() ->
                new IllegalArgumentException("no native method " + name + Console.didYouMean(name,
                        all().stream().map(Method::getName).toList(), " (./mmi call --help lists them)")));
    }

    /** Parses one command-line text per parameter of m. */
    static Object[] arguments(Method m, List<String> texts) {
        Parameter[] params = m.getParameters();
        if (texts.size() != params.length) {
            throw new IllegalArgumentException(m.getName() + " takes " + params.length + " argument"
                    + (params.length == 1 ? "" : "s") + ", got " + texts.size() + ": " + signature(m));
        }
        Object[] args = new Object[params.length];
        for (int i = 0; i < params.length; i++) {
            try {
                args[i] = Values.parse(params[i].getType(), texts.get(i));
            } catch (IllegalArgumentException e) {
                throw new IllegalArgumentException("argument " + (i + 1) + " (" + describe(params[i]) + ") of "
                        + m.getName() + ": " + e.getMessage());
            }
        }
        return args;
    }

    static String signature(Method m) {
        return Arrays.stream(m.getParameters()).map(Natives::describe).collect(Collectors.joining(", ",
                m.getName() + "(", ")")) + " -> " + m.getReturnType().getSimpleName();
    }

    private static String describe(Parameter p) {
        String type = p.getType().getSimpleName();
        return p.isNamePresent() ? type + " " + p.getName() : type;
    }

    /** Loads and binds the library; the message says why when it cannot. */
    static void load() {
        try {
            Class.forName(MmiNativeManager.class.getName(), true, Natives.class.getClassLoader());
        } catch (ClassNotFoundException e) {
            throw new IllegalStateException(e);
        } catch (ExceptionInInitializerError | UnsatisfiedLinkError e) {
            Throwable cause = e.getCause() != null ? e.getCause() : e;
            throw new Console.Failure("cannot load libKxMMI_jni: " + cause.getMessage());
        }
    }

    /** Calls m; what the method itself throws is rethrown as it is. */
    static Object invoke(Method m, Object[] args) throws Throwable {
        try {
            return m.invoke(null, args);
        } catch (InvocationTargetException e) {
            throw e.getCause();
        }
    }

    /** What m answers when it cannot reach its service, when it has no text of its own for that. */
    static Object failureValue(Class<?> type) {
        return type == int.class ? (Object) (-1) : type == long.class ? (Object) (-1L) : type == boolean.class
                ? (Object) false : type == String.class ? "" : null;
    }
}
