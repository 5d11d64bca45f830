package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.SimulatedDevice;

import java.net.URISyntaxException;
import java.nio.file.Files;
import java.nio.file.Path;

/** Starts the simulated device and loads the library in front of it, once per JVM. */
final class Library {
    static final String MANAGER = "com.tavrin.mmitest.controller.MmiNativeManager";

    private static Device.StaticFields fields;
    private static String failure;

    private Library() {}

    /**
     * The library's static fields as loading left them. A load that failed fails again with the
     * same message, for every test.
     */
    static synchronized Device.StaticFields load(ClassLoader loader) {
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

    private static Device.StaticFields start(ClassLoader loader) {
        try {
            SimulatedDevice.captureLogs();
        } catch (UnsatisfiedLinkError e) {
            throw new IllegalStateException("cannot load the simulated device: " + e.getMessage() + "; " + libraryPathHint());
        }
        SimulatedDevice.start();
        Class<?> manager;
        try {
            manager = Class.forName(MANAGER, true, loader);
        } catch (ClassNotFoundException e) {
            throw new IllegalStateException(MANAGER + " is not on the class path: add the app's classes, "
                    + "or mmi-app-api.jar from the kit");
        } catch (UnsatisfiedLinkError | ExceptionInInitializerError e) {
            Throwable cause = e.getCause() != null ? e.getCause() : e;
            throw new IllegalStateException("cannot load libKxMMI_jni: " + cause.getMessage() + "; " + libraryPathHint());
        }
        SimulatedDevice.waitIdle();
        SimulatedDevice.takeCalls();
        SimulatedDevice.takeLogs();
        try {
            return new Device.StaticFields(manager);
        } catch (IllegalAccessException e) {
            throw new IllegalStateException("cannot read the static fields of " + MANAGER + ": " + e.getMessage());
        }
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
}
