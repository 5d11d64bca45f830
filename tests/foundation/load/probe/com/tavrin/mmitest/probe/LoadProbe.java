package com.tavrin.mmitest.probe;

/** Loads the native library from Java, as the app does, and reports how the load ended. */
public final class LoadProbe {
    private LoadProbe() {}

    /** Returns null when the library loaded, else the error the load raised. */
    public static String load() {
        try {
            System.loadLibrary("KxMMI_jni");
            return null;
        } catch (Throwable t) {
            return t.toString();
        }
    }
}
