#!/bin/sh
# Takes the chosen deployment back to its previous revision.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    echo "Choose the namespace of $DEPLOYMENT first." >&2
    exit 1
fi
exec "$KUBECTL" rollout undo "deployment/$DEPLOYMENT" --context="$CONTEXT" --namespace="$NAMESPACE"
