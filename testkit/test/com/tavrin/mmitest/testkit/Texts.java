package com.tavrin.mmitest.testkit;

import java.util.List;

/** Records as the text a test compares with. */
final class Texts {
    private Texts() {}

    static List<String> of(List<?> records) {
        return records.stream().map(Object::toString).toList();
    }
}
