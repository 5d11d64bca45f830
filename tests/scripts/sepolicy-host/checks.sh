# shellcheck shell=bash disable=SC2154 # $tmp is the sourcing script's
# The device kit's SELinux policy (device/sepolicy) on the host: sourced by check-device-build,
# from the checkout's root, with $tmp set. Debian's checkpolicy compiles the kit's fragments,
# expanded by m4 with this folder's minimal macros, against this folder's minimal base; probes
# appended to the policy ask the compiler who may do what: a neverallow that the policy
# violates is a permission it grants.
sp_kit=device/sepolicy
sp_host=tests/scripts/sepolicy-host

sp_te() { ls "$sp_kit/$1"/*.te 2>/dev/null || true; }  # a folder's .te files, in the build's order
sp_lines() { grep -v -e '^[[:space:]]*#' -e '^[[:space:]]*$' "$@" || true; }  # FILE: its rules
# The app's domain, as seapp_contexts assigns it.
sp_app() { sp_lines "$sp_kit/system_ext/private/seapp_contexts" | grep -o 'domain=[A-Za-z0-9_]*' | head -n 1 | cut -d= -f2; }
# The HALs (hal_attribute in system_ext public policy) and the hwservice types (hwservice_contexts).
sp_hals() { sp_te system_ext/public | xargs -r sed -n 's/^hal_attribute(\([a-z0-9_]*\)).*/hal_\1/p'; }
sp_hwservices() { sp_lines "$sp_kit/vendor/hwservice_contexts" | sed -n 's/.*u:object_r:\([A-Za-z0-9_]*\):s0$/\1/p'; }

# sp_compile VIEW NAME [EXTRA_TE...]: expands and compiles one view of the policy into $tmp/NAME;
# prints the compiler's complaints and fails when it refuses the policy.
#   platform   the platform's side alone (base, system_ext public and private): it must not need
#              anything from the vendor's policy
#   vendor     the vendor's side as the device builds it: it sees only public policy
#   whole      everything together, as the device runs it
#   android10  everything as an Android 10 tree holds it: no protected_hwservice there
sp_compile() {
    local view=$1 name=$2 d
    shift 2
    local defs=() files=("$sp_host/te_macros" "$sp_host/head.conf" "$sp_host/public.te")
    local public private vendor
    mapfile -t public < <(sp_te system_ext/public)
    mapfile -t private < <(sp_te system_ext/private)
    mapfile -t vendor < <(sp_te vendor)
    files+=("${public[@]}")
    case $view in platform | whole | android10) files+=("$sp_host/private.te" "${private[@]}") ;; esac
    if [ "$view" != platform ]; then
        # Stand-ins for the vendor's service domains, which the vendor's own policy declares.
        for d in $(sed -n 's/^hal_server_domain(\([A-Za-z0-9_]*\),.*/\1/p' "${vendor[@]}" | sort -u); do
            grep -qE "^type ${d}[ ,;]" "${vendor[@]}" || echo "type $d, domain;"
        done >"$tmp/$name.vendor-domains.te"
        files+=("$tmp/$name.vendor-domains.te")
        if [ "$view" = android10 ]; then
            defs=(-D android10)
            mapfile -t vendor < <(printf '%s\n' "${vendor[@]}" | grep -v '/protected_hwservice\.te$')
        fi
        files+=("${vendor[@]}")
    fi
    files+=("$@" "$sp_host/tail.conf")
    m4 -s "${defs[@]}" "${files[@]}" >"$tmp/$name.conf" 2>"$tmp/$name.m4.log" ||
        { cat "$tmp/$name.m4.log"; return 1; }
    checkpolicy -M -c 30 -o "$tmp/$name.policy" "$tmp/$name.conf" >"$tmp/$name.log" 2>&1 && return 0
    grep -v -e '^checkpolicy:' -e '^#line' "$tmp/$name.log" | sed "s#$tmp/##g"
    return 1
}

# No rule of the kit names platform_app: any app signed with the platform key runs there.
sp_no_platform_app() {
    local hits
    hits=$(grep -rnw -e platform_app -e system_app "$sp_kit" | grep -v ':[0-9]*:[[:space:]]*#') || true
    [ -z "$hits" ] || { echo "$hits" | sed 's/$/    <- grant the app'"'"'s own domain instead/'; return 1; }
}

sp_platform() { sp_compile platform platform; }
sp_vendor() { sp_compile vendor vendor; }

# The labels: seapp_contexts gives the app, by name and platform signature, a domain; the
# hwservice_contexts lines label exactly the interfaces of hal/interfaces.
sp_contexts() {
    local bad=0 line key app want have
    while read -r line; do
        for key in user=_app seinfo=platform name= domain= type=; do
            [[ " $line " == *" $key"* ]] || { echo "seapp_contexts: '$line' lacks $key"; bad=1; }
        done
        for key in $line; do
            case ${key%%=*} in
                user | seinfo | name | domain | type | levelFrom | isPrivApp | minTargetSdkVersion) ;;
                *) echo "seapp_contexts: '$line': unknown key ${key%%=*}"; bad=1 ;;
            esac
        done
    done < <(sp_lines "$sp_kit/system_ext/private/seapp_contexts")
    [ -n "$(sp_app)" ] || { echo "seapp_contexts: no line assigns a domain"; bad=1; }
    want=$(for hal in hal/interfaces/*/*/I*.hal; do
        echo "vendor.tavrin.hardware.$(basename "$(dirname "$(dirname "$hal")")")::$(basename "$hal" .hal)"
    done | sort -u)
    have=$(sp_lines "$sp_kit/vendor/hwservice_contexts" | awk '{ print $1 }' | sort)
    [ "$want" = "$have" ] || {
        comm -23 <(echo "$want") <(echo "$have") | sed 's/^/hwservice_contexts: no line for /'
        comm -13 <(echo "$want") <(echo "$have") | sed 's/^/hwservice_contexts: no such interface: /'
        bad=1
    }
    sp_lines "$sp_kit/vendor/hwservice_contexts" | awk '$2 !~ /^u:object_r:[A-Za-z0-9_]+:s0$/ || NF != 2 {
        print "hwservice_contexts: \"" $0 "\" is not NAME u:object_r:TYPE:s0"; bad = 1 } END { exit bad }' || bad=1
    return $bad
}

# Probes: a "grant" line is a neverallow the policy must violate (the permission exists), a
# "never" line one it must not. Memberships are probed through a probe type of their own.
sp_probes() {  # sp_probes android10|current: writes $tmp/grant.te and $tmp/never.te
    local app hal t n=0
    app=$(sp_app)
    {
        member() { n=$((n + 1)); echo "type kx_probe_$n; allow $1 kx_probe_$n:file read;"; }
        for t in $(sp_hwservices); do
            member "$t"; echo "neverallow hwservice_manager_type kx_probe_$n:file read;"
            if [ "$1" != android10 ]; then member "$t"; echo "neverallow protected_hwservice kx_probe_$n:file read;"; fi
            echo "neverallow $app $t:hwservice_manager find;"
        done
        for hal in $(sp_hals); do
            member "$app"; echo "neverallow ${hal}_client kx_probe_$n:file read;"
            echo "neverallow $app ${hal}_server:binder call;"
        done
        member "$app"; echo "neverallow appdomain kx_probe_$n:file read;"
        member "$app"; echo "neverallow coredomain kx_probe_$n:file read;"
    } >"$tmp/grant.te"
    {
        for t in $(sp_hwservices); do echo "neverallow { coredomain -$app } $t:hwservice_manager find;"; done
        for hal in $(sp_hals); do echo "neverallow { coredomain -$app -hwservicemanager } ${hal}_server:binder call;"; done
    } >"$tmp/never.te"
}

# sp_least VIEW: the whole policy grants the app's domain each service, and no other platform or
# app domain (platform_app, system_app, untrusted_app stand in for them) any of them.
sp_least() {
    local view=$1 bad=0 line rule
    [ -n "$(sp_app)" ] || { echo "no app domain in seapp_contexts"; return 1; }
    [ -n "$(sp_hwservices)" ] && [ -n "$(sp_hals)" ] || { echo "no hwservice types or HALs found"; return 1; }
    sp_compile "$view" "$view" || return 1
    sp_probes "$view"
    if sp_compile "$view" "$view-probed" "$tmp/grant.te" "$tmp/never.te" >/dev/null; then
        echo "the probes compiled: the app's domain is granted nothing"; return 1
    fi
    grep -q 'neverallow failures occurred' "$tmp/$view-probed.log" ||
        { sed "s#$tmp/##g" "$tmp/$view-probed.log" | grep -v '^#line'; return 1; }
    # The rules the policy violates, by their text in the expanded policy.
    sed -n "s#.*(or line \([0-9]*\) of $tmp/$view-probed.conf).*#\1#p" "$tmp/$view-probed.log" |
        while read -r line; do sed -n "${line}p" "$tmp/$view-probed.conf"; done | sort -u >"$tmp/violated"
    line=
    while read -r rule; do
        [[ "$rule" == neverallow* ]] || { line=$rule; continue; }
        grep -qxF "$rule" "$tmp/violated" && continue
        rule=${rule#neverallow }
        if [[ "$rule" == *kx_probe_* ]]; then
            echo "not granted: $(sed 's/.*allow \([^ ]*\) .*/\1/' <<<"$line") in attribute ${rule%% *}"
        else
            echo "not granted: allow ${rule%;}"
        fi
        bad=1
    done <"$tmp/grant.te"
    grep "of $tmp/never.te " "$tmp/$view-probed.log" | sed 's/.*violated by /granted beyond the app'"'"'s own domain: /' || true
    grep -q "of $tmp/never.te " "$tmp/$view-probed.log" && bad=1
    return $bad
}

# The form the device loads: the whole policy, converted to CIL, compiles with secilc.
sp_cil() {
    sp_compile whole cil || return 1
    checkpolicy -M -C -c 30 -o "$tmp/whole.cil" "$tmp/cil.conf" >"$tmp/cil.log" 2>&1 || { cat "$tmp/cil.log"; return 1; }
    secilc -M true -c 30 -o "$tmp/whole.secilc" -f /dev/null "$tmp/whole.cil" 2>&1
}

# The check itself can fail: a grant to every app and a malformed rule, each added to a copy of
# the kit, are refused for what they are.
sp_refuses() {
    local kit=$sp_kit bad=0 out
    rm -rf "$tmp/kit-mutant" && cp -r "$kit" "$tmp/kit-mutant" && sp_kit=$tmp/kit-mutant
    printf '\n%s\n' "allow appdomain hal_kxfactory_server:binder call;" >>"$sp_kit/system_ext/private/kxmmi_app.te"
    out=$(sp_least whole 2>&1) || true
    grep -q "granted beyond the app's own domain: allow platform_app hal_kxfactory_default:binder" <<<"$out" ||
        { echo "a call of the factory service by every app was not refused: $out"; bad=1; }
    rm -rf "$tmp/kit-mutant" && cp -r "$kit" "$tmp/kit-mutant"
    printf '\n%s\n' "allow hal_kxtp_client kx_tp_hwservice hwservice_manager find;" >>"$sp_kit/vendor/kx_hals.te"
    out=$(sp_compile vendor mutant 2>&1) || true
    grep -q "kx_hals.te:[0-9]*:ERROR 'syntax error'" <<<"$out" ||
        { echo "a malformed rule was not refused with its file and line: $out"; bad=1; }
    sp_kit=$kit
    return $bad
}
