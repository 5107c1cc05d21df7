#!/bin/sh
# Replaces the pods of the chosen deployment, a few at a time.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    echo "Choose the namespace of $DEPLOYMENT first." >&2
    exit 1
fi
exec "$KUBECTL" rollout restart "deployment/$DEPLOYMENT" --context="$CONTEXT" --namespace="$NAMESPACE"
