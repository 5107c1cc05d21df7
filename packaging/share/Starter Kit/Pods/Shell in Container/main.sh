#!/bin/sh
# A shell in the chosen container: bash where there is one.
printf '%s: %s\n' "$POD" "$CONTAINER"
"$KUBECTL" exec --stdin --tty "pod/$POD" --container="$CONTAINER" --context="$CONTEXT" --namespace="$NAMESPACE" \
    -- sh -c 'command -v bash >/dev/null && exec bash || exec sh'
