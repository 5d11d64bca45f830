package com.tavrin.mmitest.testkit;

import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.net.MalformedURLException;
import java.net.URISyntaxException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.CodeSource;
import java.util.Arrays;
import java.util.Map;
import java.util.TreeMap;
import java.util.stream.Collectors;

/** The natives of an app's class, and those the library binds: the kit's own copy of the class in mmi-app-api.jar. */
final class Natives {
    static final String APP_API_JAR = "mmi-app-api.jar";

    private Natives() {}

    /** {@code "int setLightBrightnessNative(int, int)"}. */
    static String signature(Method method) {
        return method.getReturnType().getTypeName() + " " + method.getName()
                + Arrays.stream(method.getParameterTypes()).map(Class::getTypeName).collect(Collectors.joining(", ", "(", ")"));
    }

    /** The class's natives, by name in alphabetical order. */
    static Map<String, String> of(Class<?> manager) {
        Map<String, String> natives = new TreeMap<>();
        for (Method m : manager.getDeclaredMethods()) {
            if (Modifier.isNative(m.getModifiers())) {
                natives.put(m.getName(), signature(m));
            }
        }
        return natives;
    }

    /**
     * The natives the library binds, read from the kit's mmi-app-api.jar beside the kit's jar
     * (without initialising the class); empty when that jar is not there.
     */
    static Map<String, String> expected() {
        CodeSource source = Natives.class.getProtectionDomain().getCodeSource();
        if (source == null) {
            return Map.of();
        }
        try {
            Path jar = Path.of(source.getLocation().toURI()).resolveSibling(APP_API_JAR);
            if (!Files.isRegularFile(jar)) {
                return Map.of();
            }
            try (URLClassLoader loader = new URLClassLoader(new URL[] {jar.toUri().toURL()},
                    ClassLoader.getPlatformClassLoader())) {
                return of(Class.forName(Library.MANAGER, false, loader));
            }
        } catch (URISyntaxException | IllegalArgumentException | MalformedURLException | ClassNotFoundException
                | LinkageError e) {
            return Map.of();
        } catch (java.io.IOException e) {
            return Map.of();
        }
    }
}
