package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.IOException;
import java.lang.reflect.Field;
import java.net.URISyntaxException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.stream.Stream;

/** Starts the simulated device and loads the library in front of it, once per JVM. */
final class Library {
    static final String MANAGER = "com.tavrin.mmitest.controller.MmiNativeManager";

    private static StaticFields fields;
    private static String failure;

    private Library() {}

    /**
     * The library's static fields as loading left them. A load that failed fails again with the
     * same message, for every test.
     */
    static synchronized StaticFields load(ClassLoader loader) {
        if (fields == null && failure == null) {
            try {
                fields = start(loader);
            } catch (IllegalStateException e) {
                failure = e.getMessage();
            }
        }
        if (failure != null) {
            throw new IllegalStateException(failure);
        }
        return fields;
    }

    private static StaticFields start(ClassLoader loader) {
        try {
            SimulatedDevice.captureLogs();
        } catch (UnsatisfiedLinkError e) {
            throw new IllegalStateException("cannot load the simulated device: " + e.getMessage() + "; " + libraryPathHint());
        }
        requireOneFolder();
        SimulatedDevice.start();
        Class<?> manager;
        try {
            manager = Class.forName(MANAGER, false, loader);
        } catch (ClassNotFoundException e) {
            throw new IllegalStateException(MANAGER + " is not on the class path: add the app's classes, "
                    + "or mmi-app-api.jar from the kit");
        }
        try {
            Class.forName(MANAGER, true, loader);
        } catch (ClassNotFoundException e) {
            throw new IllegalStateException(MANAGER + " vanished from the class path: " + e.getMessage());
        } catch (LinkageError e) {
            Throwable cause = e instanceof ExceptionInInitializerError && e.getCause() != null ? e.getCause() : e;
            requireOneFolder();
            String natives = nativesMismatch(manager);
            if (natives == null) {
                // Without the kit's copy of the class, the JVM's own words name the method.
                natives = cause instanceof NoSuchMethodError ? cause.getMessage() + "; declare the natives as in the "
                        + "kit's mmi-app-api.jar" : cause + "; " + libraryPathHint();
            }
            throw new IllegalStateException("cannot load libKxMMI_jni for " + MANAGER + ": " + natives);
        }
        requireOneFolder();
        Waits.within(Device.defaultWaitLimit(), "the library to connect the services after loading",
                SimulatedDevice::waitIdle);
        SimulatedDevice.takeCallRecords();
        SimulatedDevice.takeLogLines();
        return new StaticFields(manager, SimulatedDevice.catalogue().writtenFields());
    }

    /**
     * The natives of the app's class that differ from what the library binds, named with the
     * signature the library expects; null when they all match or the kit's copy of the class is
     * not at hand.
     */
    static String nativesMismatch(Class<?> manager) {
        Map<String, String> expected = Natives.expected();
        Map<String, String> actual = Natives.of(manager);
        List<String> wrong = new ArrayList<>();
        expected.forEach((name, signature) -> {
            String found = actual.get(name);
            if (found == null) {
                wrong.add(name + " is missing; the library expects " + signature);
            } else if (!found.equals(signature)) {
                wrong.add(name + " is " + found + "; the library expects " + signature);
            }
        });
        if (wrong.isEmpty()) {
            return null;
        }
        return "the app's class does not declare the natives the library binds: " + String.join("; ", wrong)
                + " (declare them as in the kit's mmi-app-api.jar, or use that jar instead of the app's class)";
    }

    /**
     * The kit's libraries must come from one folder: a copy found first through
     * {@code LD_LIBRARY_PATH} talks to a transport the others do not see.
     */
    private static void requireOneFolder() {
        Map<String, Path> loaded = loadedLibraries();
        Path device = loaded.get(System.mapLibraryName("simdevice_jni"));
        if (device == null) {
            return;
        }
        Path folder = device.getParent();
        List<String> elsewhere = new ArrayList<>();
        try (Stream<Path> kit = Files.list(folder)) {
            kit.map(p -> p.getFileName().toString()).filter(loaded::containsKey)
                    .filter(name -> !loaded.get(name).getParent().equals(folder))
                    .forEach(name -> elsewhere.add(loaded.get(name).toString()));
        } catch (IOException e) {
            return;  // the folder cannot be listed; nothing to compare with
        }
        if (!elsewhere.isEmpty()) {
            String ldPath = System.getenv("LD_LIBRARY_PATH");
            throw new IllegalStateException("the kit's libraries are mixed with other copies: "
                    + String.join(", ", elsewhere) + " loaded instead of the copies in " + folder
                    + (ldPath == null || ldPath.isEmpty() ? "" : ", found through LD_LIBRARY_PATH=" + ldPath
                            + "; unset LD_LIBRARY_PATH for the test JVM (the kit's libraries find each other without it)"));
        }
    }

    /** The shared libraries mapped into this process, by file name. */
    private static Map<String, Path> loadedLibraries() {
        Map<String, Path> loaded = new LinkedHashMap<>();
        try (Stream<String> maps = Files.lines(Path.of("/proc/self/maps"))) {
            maps.map(line -> line.substring(line.lastIndexOf(' ') + 1)).filter(p -> p.startsWith("/") && p.contains(".so"))
                    .map(Path::of).forEach(p -> loaded.putIfAbsent(p.getFileName().toString(), p));
        } catch (IOException | RuntimeException e) {
            // Without /proc the check is skipped.
        }
        return loaded;
    }

    /** How to point the JVM at the kit's libraries, naming the folder when the kit jar sits in one. */
    private static String libraryPathHint() {
        java.security.CodeSource source = Library.class.getProtectionDomain().getCodeSource();
        if (source != null) {
            try {
                Path lib = Path.of(source.getLocation().toURI()).resolveSibling("lib");
                if (Files.isRegularFile(lib.resolve(System.mapLibraryName("KxMMI_jni")))) {
                    return "run the JVM with -Djava.library.path=" + lib;
                }
            } catch (URISyntaxException | IllegalArgumentException e) {
                // Not a file location; the general advice below still holds.
            }
        }
        return "run the JVM with -Djava.library.path=<kit>/lib";
    }

    /** The library's static String fields as they were after loading, put back for each test. */
    static final class StaticFields {
        private final List<Field> fields = new ArrayList<>();
        private final List<Object> values = new ArrayList<>();

        StaticFields(Class<?> manager, List<String> names) {
            for (String name : names) {
                Field field;
                try {
                    field = manager.getDeclaredField(name);
                    field.setAccessible(true);
                    values.add(field.get(null));
                } catch (NoSuchFieldException e) {
                    continue;  // the app's copy may lack it; the library then logs and skips it
                } catch (IllegalAccessException e) {
                    throw new IllegalStateException("cannot read " + MANAGER + "." + name + ": " + e.getMessage());
                }
                fields.add(field);
            }
        }

        void restore() {
            try {
                for (int i = 0; i < fields.size(); i++) {
                    fields.get(i).set(null, values.get(i));
                }
            } catch (IllegalAccessException e) {
                throw new IllegalStateException("cannot reset " + e.getMessage(), e);
            }
        }
    }
}
